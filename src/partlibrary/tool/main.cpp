#include "partlibrary/tool/commands.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    try {
        return partkeep::RunLibraryTool(argc, argv, std::cout, std::cerr);
    } catch (const std::exception& trouble) {
        std::cerr << "partkeep-library: " << trouble.what() << '\n';
        return 1;
    }
}
