// Three small libraries whose contents tell what they are of, and somebody else who changes them.
#pragma once

#include <QString>

#include <filesystem>
#include <string>

namespace partkeep {

class ILibraryWriter;

class CMonkeyShop {
public:
    // Makes the libraries in a folder that need not be there. What cannot be done ends the program.
    explicit CMonkeyShop(const std::filesystem::path& place);

    // Changes a part, removes one, or takes a library away or gives it back.
    void Change(unsigned choice);
    void GiveBack();

    [[nodiscard]] QString Folder() const { return QString::fromStdString(place_.string()); }

    // What is not as it should be in the file of a part, in native spelling; empty where all is well: it is of one
    // version of the part, and whole.
    [[nodiscard]] static std::string FaultIn(const std::string& file, const std::string& server,
                                             const std::string& folder, const std::string& name);

private:
    [[nodiscard]] QString File(const char* server) const;
    void Put(const char* server, const char* folder, int number);
    template <class Action>
    void Write(const char* server, const Action& action);

    std::filesystem::path place_;
    const char* taken_ = "";
    int version_ = 0;
};

} // namespace partkeep
