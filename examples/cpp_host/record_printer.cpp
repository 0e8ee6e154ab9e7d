#include "record_printer.h"

#include <array>
#include <cstdio>
#include <ostream>
#include <utility>

namespace {

using partkeep_read_api::Part;
using Field = std::pair<const char*, std::string>;

std::vector<Field> FieldsOf(const Part& part)
{
    std::array<char, 32> thickness{};
    std::snprintf(thickness.data(), thickness.size(), "%.4f", part.thickness);
    return {{"server", part.server_name},   {"folder", part.folder_name},     {"part", part.part_name},
            {"comment", part.part_comment}, {"material", part.material_type}, {"thickness", thickness.data()},
            {"quantity", part.quantity},    {"machine", part.machine_name},   {"file", part.file_path_name},
            {"SY file", part.sy_file_name}, {"NC file", part.nc_file_name}};
}

std::string JsonText(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
            quoted += escape.data();
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

void PrintJsonPart(std::ostream& out, const Part& part)
{
    const char* separator = "{";
    for (const auto& [name, value] : FieldsOf(part)) {
        out << separator << JsonText(name) << ": " << JsonText(value);
        separator = ", ";
    }
    out << "}";
}

} // namespace

void PrintTable(std::ostream& out, const std::vector<Outcome>& outcomes)
{
    for (const Outcome& outcome : outcomes) {
        out << outcome.operation << ": " << outcome.result << '\n';
        for (const Part& part : outcome.parts) {
            for (const auto& [name, value] : FieldsOf(part)) {
                if (!value.empty()) {
                    out << "  " << name << std::string(11 - std::string(name).size(), ' ') << value << '\n';
                }
            }
            out << '\n';
        }
    }
}

void PrintJson(std::ostream& out, const std::vector<Outcome>& outcomes)
{
    out << "[";
    const char* separator = "\n";
    for (const Outcome& outcome : outcomes) {
        out << separator << "  {\"operation\": " << JsonText(outcome.operation)
            << ", \"result\": " << JsonText(outcome.result) << ", \"parts\": [";
        const char* part_separator = "\n    ";
        for (const Part& part : outcome.parts) {
            out << part_separator;
            PrintJsonPart(out, part);
            part_separator = ",\n    ";
        }
        out << "]}";
        separator = ",\n";
    }
    out << "\n]\n";
}
