#include "fuzz/library_forger.h"

#include "partlibrary/library/library_text.h"
#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/library_rows.h"
#include "partlibrary/sqlite/schema.h"

#include <array>
#include <ctime>

namespace partkeep {

namespace {

class CForger {
public:
    CForger(CConnection& library, int parts, std::mt19937& random) : library_(library), parts_(parts), random_(random)
    {
    }

    void ForgeOne()
    {
        switch (Below(10)) {
        case 0:
        case 1:
            return Part();
        case 2:
        case 3:
            return Folder();
        case 4:
            return Do("UPDATE folder SET parts = ? WHERE id = ?", Number(), Below(4) + 1);
        case 5:
            return Do("UPDATE OR IGNORE part SET id = ? WHERE id = ?", Number(), Below(parts_) + 1);
        case 6:
            return File();
        case 7:
            return Piece();
        case 8:
            return Keys();
        default:
            return Do("UPDATE library SET next_part = ?, next_content = ?, importer = ?, importer_seen = ?", Number(),
                      Number(), Number(), Below(2) == 0 ? Number() : qint64{std::time(nullptr)});
        }
    }

private:
    [[nodiscard]] qint64 Below(int limit) { return random_() % static_cast<unsigned>(limit); }
    [[nodiscard]] qint64 Number()
    {
        const qint64 wide = static_cast<qint64>(random_()) << Below(32);
        return Below(4) == 0 ? -wide : Below(2) == 0 ? wide : Below(20);
    }
    [[nodiscard]] QString Name()
    {
        static const std::array<QString, 14> names{
            QStringLiteral("..\\..\\up"), QStringLiteral("../up"),      QStringLiteral("/tmp/up"),
            QStringLiteral(".."),         QStringLiteral("a\nb"),       QStringLiteral("nul"),
            QStringLiteral("x "),         QString(5000, u'n'),          QString(),
            QStringLiteral("C:x"),        QStringLiteral("A\\B\\C"),    QStringLiteral("\x1B[2J"),
            QString(u'\0') + u'x',        QString(QChar(0xD800)) + u'x'};
        return names[random_() % names.size()];
    }
    template <typename... Values>
    void Do(std::string_view sql, const Values&... values)
    {
        library_.Execute(sql, values...);
    }

    void Part()
    {
        const PartRow row{Below(parts_) + 1,
                          Below(4) + 1,
                          static_cast<SlotSet>(random_() % 200),
                          static_cast<std::int32_t>(random_()),
                          Name(),
                          Name(),
                          Name(),
                          Name()};
        Do("UPDATE OR IGNORE part SET folder = ?, slots = ?, thickness = ?, name = ?, material = ?, machine = ?, "
           "comment = ?, sum = ? WHERE id = ?",
           row.folder, qint64{row.slots}, qint64{row.thickness}, row.name, row.material, row.machine, row.comment,
           PartSum(library_.Salt(), row), row.id);
    }

    // Rings too: a folder may hang below itself.
    void Folder()
    {
        const qint64 folder = Below(4) + 1;
        const qint64 parent = Below(5);
        const QString own = Below(3) == 0 ? QStringLiteral("A") : Name();
        const QString path = Below(2) == 0 ? own : Below(2) == 0 ? own + u'\\' + own : Name();
        Do("UPDATE OR IGNORE folder SET parent = ?, name = ?, path = ?, sum = ? WHERE id = ?", parent, own, path,
           FolderSum(library_.Salt(), folder, parent, ToUtf8(own), ToUtf8(path)), folder);
    }

    void File()
    {
        const qint64 id = (Below(parts_) + 1) * slots_per_part + Below(2) * 3;
        const qint64 content = Below(3) == 0 ? Number() : Below(2 * parts_) + 1;
        const qint64 bytes = Number();
        const QByteArray hash(Below(4) == 0 ? 5 : 32, 'h');
        Do("REPLACE INTO part_file VALUES(?, ?, ?, ?, ?)", id, content, bytes, hash,
           FileSum(library_.Salt(), id, content, bytes, {hash.constData(), static_cast<std::size_t>(hash.size())}));
    }

    void Piece()
    {
        const qint64 id = (Below(2 * parts_) + 1) * pieces_per_content + Below(3);
        const QByteArray content(Below(70000), 'z');
        Do("REPLACE INTO piece VALUES(?, ?, ?)", id,
           PieceSum(library_.Salt(), id, {content.constData(), static_cast<std::size_t>(content.size())}), content);
    }

    // No sum is over these, since nothing that is shown is read from them.
    void Keys()
    {
        const QByteArray key(Below(3000), static_cast<char>(random_()));
        switch (Below(4)) {
        case 0:
            return Do("UPDATE part SET name_key = ?, comment_key = ? WHERE id = ?", key, key, Below(parts_) + 1);
        case 1:
            return Do("UPDATE part SET search_text = ? WHERE id = ?", QString::fromLatin1(key), Below(parts_) + 1);
        case 2:
            return Do("UPDATE folder SET sort_key = ? WHERE id = ?", key, Below(4) + 1);
        default:
            return Do("UPDATE library SET keys = ?", Name());
        }
    }

    CConnection& library_;
    int parts_;
    std::mt19937& random_;
};

} // namespace

void ForgeRows(const QString& file, int parts, std::mt19937& random)
{
    LibraryProblem problem;
    const auto library = CConnection::Open(file, OpenMode::Write, problem);
    if (library == nullptr || !library->Execute("BEGIN")) {
        return;
    }
    CForger forger(*library, parts, random);
    for (unsigned count = 1 + random() % 4; count > 0; --count) {
        forger.ForgeOne();
    }
    library->Execute("COMMIT");
}

} // namespace partkeep
