// The module that is linked with the database's client library, and hands out its functions.
#include "partlibrary/postgres/pq_functions.h"

extern "C" __attribute__((visibility("default"))) const partkeep::PqDriver* partkeep_postgres_driver()
{
#define PARTKEEP_PQ_POINTER(name) &::name,
    static const partkeep::PqDriver driver{sizeof(partkeep::PqDriver), PARTKEEP_PQ_FUNCTIONS(PARTKEEP_PQ_POINTER)};
#undef PARTKEEP_PQ_POINTER
    return &driver;
}
