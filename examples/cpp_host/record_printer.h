// Prints the outcome of host operations and the records they gave, as a table or as JSON.
#pragma once

#include "partkeep_read.hpp"

#include <iosfwd>
#include <string>
#include <vector>

struct Outcome {
    std::string operation;
    std::string result; // S_OK or S_FALSE
    std::vector<partkeep_read_api::Part> parts;
};

void PrintTable(std::ostream& out, const std::vector<Outcome>& outcomes);
void PrintJson(std::ostream& out, const std::vector<Outcome>& outcomes);
