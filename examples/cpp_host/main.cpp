// An example host: reads named parts without a dialog, or lets the user pick parts, and prints what came.

#include "record_printer.h"

#include "partkeep_read.hpp"

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>
#include <vector>

namespace {

struct Options {
    std::string working_folder;
    int language = 1;
    std::string server;
    std::string folder;
    std::vector<std::string> parts;
    bool select = false;
    bool select_several = false;
    bool json = false;
};

const char* ResultName(bool ok)
{
    return ok ? "S_OK" : "S_FALSE";
}

std::vector<Outcome> ReadParts(partkeep_read_api::Reader& reader, const Options& options)
{
    std::vector<Outcome> outcomes;
    for (const std::string& name : options.parts) {
        const auto part = reader.ReadCadData(options.server, options.folder, name);
        Outcome outcome{"ReadCADDataForTessara " + name, ResultName(part.has_value()), {}};
        if (part) {
            outcome.parts.push_back(*part);
        }
        outcomes.push_back(outcome);
    }
    return outcomes;
}

Outcome SelectParts(partkeep_read_api::Reader& reader, bool several)
{
    Outcome outcome;
    outcome.operation = several ? "InvokePartkeepMultiSelection" : "InvokePartkeep";
    outcome.result = ResultName(several ? reader.InvokeMultiSelection(true) : reader.Invoke());
    for (int index = 0; index < reader.NumberOfPartsSelected(); ++index) {
        outcome.parts.push_back(reader.PartInfo(index));
    }
    return outcome;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    CLI::App app("Reads parts into a working folder and prints their records.", "partkeep-host");
    app.add_option("-w,--working-folder", options.working_folder, "Folder for the files, with its trailing separator")
        ->required();
    app.add_option("-l,--language", options.language, "1 English, 2 Japanese, 3 simplified Chinese, 0 the user's own");
    app.add_option("-s,--server", options.server, "Server of the parts to read");
    app.add_option("-f,--folder", options.folder, "Folder on that server, levels divided by backslashes");
    app.add_option("-p,--part", options.parts, "Part to read without a dialog; may be repeated");
    app.add_flag("--select", options.select, "Let the user pick one part in the dialog");
    app.add_flag("--select-several", options.select_several, "Let the user pick several parts in the dialog");
    app.add_flag("--json", options.json, "Print JSON instead of a table");
    CLI11_PARSE(app, argc, argv);

    partkeep_read_api::Reader reader;
    reader.SetWorkingFolder(options.working_folder);
    reader.SetLanguageId(options.language);
    std::vector<Outcome> outcomes = ReadParts(reader, options);
    if (options.select || options.select_several) {
        outcomes.push_back(SelectParts(reader, options.select_several));
    }
    if (options.json) {
        PrintJson(std::cout, outcomes);
    } else {
        PrintTable(std::cout, outcomes);
    }
    return 0;
}
