// What a statement gave, by rows and columns. Values are in binary; none is null but where a caller asks. What is asked
// for and not there is empty, and so 0 as a number: how many columns come is up to the server.
#pragma once

#include "partlibrary/library/library_text.h"
#include "partlibrary/postgres/pg_driver.h"
#include "partlibrary/postgres/sql.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <string_view>

namespace partkeep {

class CPgResult {
public:
    CPgResult() = default;
    CPgResult(const PqDriver& driver, PGresult* result) : driver_(&driver), result_(result, driver.PQclear) {}

    [[nodiscard]] int Rows() const { return result_ != nullptr ? driver_->PQntuples(result_.get()) : 0; }
    [[nodiscard]] bool IsNull(int row, int column) const
    {
        return driver_->PQgetisnull(result_.get(), row, column) != 0;
    }
    [[nodiscard]] std::string_view Raw(int row, int column) const
    {
        const char* const value = driver_->PQgetvalue(result_.get(), row, column);
        const int length = value != nullptr ? driver_->PQgetlength(result_.get(), row, column) : 0;
        return {value, static_cast<std::size_t>(length)};
    }
    [[nodiscard]] qint64 Integer(int row, int column) const { return ReadNumber<qint64>(Raw(row, column)); }
    [[nodiscard]] QString Text(int row, int column) const { return FromUtf8(Raw(row, column)); }
    [[nodiscard]] QByteArray Bytes(int row, int column) const
    {
        const std::string_view bytes = Raw(row, column);
        return {bytes.data(), static_cast<qsizetype>(bytes.size())};
    }

    [[nodiscard]] ExecStatusType Status() const { return driver_->PQresultStatus(result_.get()); }
    // One of the fields of an error, such as PG_DIAG_SQLSTATE; empty where it has none.
    [[nodiscard]] std::string_view ErrorField(int field) const
    {
        const char* const text = driver_->PQresultErrorField(result_.get(), field);
        return text != nullptr ? text : std::string_view();
    }
    [[nodiscard]] explicit operator bool() const { return result_ != nullptr; }

private:
    const PqDriver* driver_ = nullptr;
    std::unique_ptr<PGresult, void (*)(PGresult*)> result_{nullptr, nullptr};
};

} // namespace partkeep
