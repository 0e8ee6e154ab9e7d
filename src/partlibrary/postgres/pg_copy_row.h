// Rows on their way into a table, as COPY takes them in binary.
#pragma once

#include "partlibrary/postgres/sql.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <string>
#include <string_view>

namespace partkeep {

// Values of a row on its way in, each behind its length.
class CCopyRow {
public:
    CCopyRow(std::string& rows, std::int16_t columns) : rows_(rows) { AppendNumber(rows_, columns); }
    template <typename Number>
    CCopyRow& Put(Number number)
    {
        AppendNumber(rows_, static_cast<std::int32_t>(sizeof number));
        AppendNumber(rows_, number);
        return *this;
    }
    CCopyRow& Put(std::string_view bytes)
    {
        AppendNumber(rows_, static_cast<std::int32_t>(bytes.size()));
        rows_ += bytes;
        return *this;
    }
    CCopyRow& Put(const QString& text) { return Put(std::string_view(ToUtf8(text))); }
    CCopyRow& Put(const QByteArray& bytes)
    {
        return Put(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    }

private:
    std::string& rows_;
};

} // namespace partkeep
