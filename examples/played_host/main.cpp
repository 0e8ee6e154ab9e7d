// A host that plays its own operator: runs the selection dialog, works it by real clicks and keys, keeps pictures
// of the windows and prints what was picked. Needs no screen (QT_QPA_PLATFORM=offscreen).

#include "record_printer.h"
#include "tour.h"

#include "partkeep_read.hpp"

#include <CLI/CLI.hpp>
#include <QApplication>
#include <QPalette>

#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    std::string working_folder;
    std::string pictures;
    std::string suffix;
    int language = 1;
    CLI::App app("Plays an operator on the selection dialog and prints what was picked.", "partkeep-tour");
    app.add_option("-w,--working-folder", working_folder, "Folder for the files, with its trailing separator")
        ->required();
    app.add_option("--pictures", pictures, "Existing folder for pictures of the windows")->required();
    app.add_option("--suffix", suffix, "Put behind each picture's name");
    app.add_option("-l,--language", language, "1 English, 2 Japanese, 3 simplified Chinese");
    bool features = false;
    bool dark = false;
    app.add_flag("--features", features, "Show what the part browser can do, in English");
    app.add_flag("--dark", dark, "In dark colours");
    CLI11_PARSE(app, argc, argv);

    const QApplication application(argc, argv);
    partkeep_read_api::Reader reader;
    reader.SetWorkingFolder(working_folder);
    reader.SetLanguageId(language);
    CTour tour(QString::fromStdString(pictures), QString::fromStdString(suffix));
    if (dark) {
        QPalette colours(QColor(45, 45, 48));
        colours.setColor(QPalette::Base, QColor(30, 30, 30));
        QApplication::setPalette(colours);
    }
    if (features) {
        tour.ShowFeatures();
    }
    tour.Start();
    Outcome outcome{"InvokePartkeepMultiSelection", reader.InvokeMultiSelection(true) ? "S_OK" : "S_FALSE", {}};
    for (int index = 0; index < reader.NumberOfPartsSelected(); ++index) {
        outcome.parts.push_back(reader.PartInfo(index));
    }
    PrintTable(std::cout, {outcome});
    if (!tour.Succeeded() || outcome.parts.empty()) {
        std::cerr << "partkeep-tour: " << tour.Problem().toStdString() << '\n';
        return 1;
    }
    return 0;
}
