#include <partkeep_read.h>

#include <stddef.h>

int main(void)
{
    int32_t count = -1;
    partkeep_read* object = partkeep_read_create();
    int32_t result = partkeep_read_number_of_parts_selected(object, &count);
    partkeep_read_destroy(object);
    return object != NULL && partkeep_read_version() == PARTKEEP_READ_VERSION && result == PARTKEEP_READ_OK &&
                   count == 0
               ? 0
               : 1;
}
