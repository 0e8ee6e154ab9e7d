// Names that are safe to become part of a path, and short enough for every buffer that they pass through.
// Checked when a name enters a library and again before a file is written, so that neither a careless import
// nor a library from elsewhere can reach outside the target folder, on any platform that shares the files.
#pragma once

#include <QString>
#include <QStringView>

#include <cstddef>

namespace partkeep {

// What the name of a library's file ends in, behind the server's name.
inline constexpr const char16_t* library_extension = u".kpl";

// Bytes in the system code page of a server name, a folder path or a part name: the smallest buffer that a
// caller of the browser gives has room for these and the terminator.
inline constexpr std::size_t max_name_bytes = 99;

// Bytes in the system code page of material, machine name and comment.
inline constexpr std::size_t max_attribute_bytes = 255;

enum class NameFault {
    None,
    Empty,
    TooLong,
    NotText,           // unpaired surrogate, or U+FFFD
    ControlCharacter,  // below blank, 127, and 128 to 159
    ReservedCharacter, // one of \ / : * ? " < > |
    BadEnd,            // begins with a blank, or ends with a blank or a dot
    DeviceName,
    NotInCodePage, // has characters that the system code page cannot hold
};

// A server name, a part name, or one component of a folder path.
[[nodiscard]] NameFault CheckName(QStringView name);

// A folder path: components joined by backslashes, none at either end. Empty text is the root.
[[nodiscard]] NameFault CheckFolderPath(QStringView path);

// An attribute's text: empty is fine, a control character is not.
[[nodiscard]] NameFault CheckAttribute(QStringView text);

[[nodiscard]] QString NameFaultText(NameFault fault);

// A folder's path as a caller may write it: separators at its ends do not count.
[[nodiscard]] QString FolderPath(QStringView text);

// One path behind another; either may be empty.
[[nodiscard]] QString JoinPath(const QString& left, const QString& right);

} // namespace partkeep
