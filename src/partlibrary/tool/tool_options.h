// What a command line asks for.
#pragma once

#include <string>
#include <vector>

namespace partkeep {

struct ToolOptions {
    std::string library;
    std::string other;               // a second library, or a folder outside
    std::string folder;              // in the library
    std::string table;               // of attributes
    std::string place;               // one, or several by a pattern
    std::vector<std::string> places; // each the same
    std::string name;
    std::string thickness, material, machine, comment; // to be set
    std::vector<std::string> columns;                  // which of them are given
    unsigned code_page = 0;
    unsigned seconds = 2;
    bool rebuild = false;
    bool replace = false;
    bool names = false;
    bool once = false;
    bool dry_run = false;
    bool json = false;
};

} // namespace partkeep
