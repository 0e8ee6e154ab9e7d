// Small libraries in a temporary folder.
#pragma once

#include "partlibrary/library_writer.h"
#include "partlibrary/part_library.h"
#include "tests/support/temporary_folder.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

// A bitmap file of `size` bytes as far as a library looks.
[[nodiscard]] QByteArray SmallBitmap(qsizetype size = 400);
[[nodiscard]] QByteArray SmallPng();

// Adds a part with the given files; a file's content is "<name><extension>" but for pictures.
void PutTestPart(CLibraryWriter& writer, const QString& folder, const QString& name, SlotSet slots,
                 const PartAttributes& attributes = {});

class CTestLibraries {
public:
    [[nodiscard]] QString Folder() const { return QString::fromStdString(folder_.Path().string()); }
    [[nodiscard]] QString FileOf(const QString& server) const
    {
        return Folder() + u'/' + server + QStringLiteral(".kpl");
    }

    // Makes the library if need be and runs `fill` in one transaction; fails the test when anything fails.
    void Fill(const QString& server, const std::function<void(CLibraryWriter&)>& fill);

    // "SRV1" with the folders Plates and Plates\2008, the latter with the parts P1 (everything), P2 (.bmf),
    // P10 (.iga, .NCD), p1 (.SY5) and Bare (nothing); Plates with Top (.iga). "板金" with 筐体 and カバー1.
    void MakeShop();

private:
    CTemporaryFolder folder_;
};

[[nodiscard]] std::vector<std::string> NamesOf(const std::vector<PartRow>& rows);

} // namespace partkeep
