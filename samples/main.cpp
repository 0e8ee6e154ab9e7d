// partkeep-samples: makes the sample libraries. It ends with 0, with 1 when the work failed, and with 100 or more for
// a command line that it does not understand.
#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "samples/sample_library.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>

namespace partkeep {

namespace {

int MakeSamples(const std::string& folder, bool replace)
{
    LibraryProblem problem;
    QStringList made;
    const bool done = MakeSampleLibraries(FromUtf8(folder), replace, made, problem);
    for (const QString& file : made) {
        std::cout << "made " << Printable(file) << '\n';
    }
    if (!done) {
        std::cerr << "partkeep-samples: " << ProblemText(problem) << '\n';
    }
    return done ? 0 : 1;
}

} // namespace

} // namespace partkeep

int main(int argc, char** argv)
{
    std::string folder;
    bool replace = false;
    CLI::App app("Makes part libraries to try everything on.", "partkeep-samples");
    app.add_option("folder", folder, "An existing folder to put them into")->required();
    app.add_flag("--replace", replace, "Replace sample libraries that are there already");
    try {
        app.parse(argc, argv);
        return partkeep::MakeSamples(folder, replace);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::exception& trouble) {
        std::cerr << "partkeep-samples: " << trouble.what() << '\n';
        return 1;
    }
}
