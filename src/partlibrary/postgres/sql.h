// A statement and its values, which never become part of its text: text comes from literals alone, at compile time, and
// each value takes the place of a parameter, in binary.
#pragma once

#include "partlibrary/library/library_text.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

// A piece of a statement's text. Not from anything that is known only at run time.
class SqlText {
public:
    consteval SqlText(const char* text) : text_(text) {} // NOLINT(google-explicit-constructor)
    [[nodiscard]] constexpr std::string_view View() const { return text_; }

private:
    std::string_view text_;
};

// Numbers of the server's types (pg_type).
enum class SqlType : unsigned {
    Bytes = 17,
    Int8 = 20,
    Int4 = 23,
    Text = 25,
    BytesMany = 1001,
    Int4s = 1007,
    Int8s = 1016
};

// Numbers in the order of the network.
template <typename Number>
void AppendNumber(std::string& bytes, Number number)
{
    for (int shift = static_cast<int>(sizeof number) * 8 - 8; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> shift);
    }
}

template <typename Number>
[[nodiscard]] Number ReadNumber(std::string_view bytes)
{
    std::uint64_t number = bytes.empty() || static_cast<signed char>(bytes.front()) >= 0 ? 0 : ~std::uint64_t{0};
    for (const char byte : bytes) {
        number = number << 8 | static_cast<std::uint8_t>(byte);
    }
    return static_cast<Number>(number);
}

class CSql {
public:
    struct Parameter {
        SqlType type;
        std::string bytes;
    };

    explicit CSql(SqlText text) : text_(text.View()) {}

    CSql& Add(SqlText text)
    {
        text_ += text.View();
        return *this;
    }
    CSql& Value(qint64 number) { return Number(SqlType::Int8, number); }
    CSql& Value(std::int32_t number) { return Number(SqlType::Int4, number); }
    CSql& Value(const QString& text) { return Put(SqlType::Text, ToUtf8(text)); }
    CSql& Value(const QByteArray& bytes) { return Put(SqlType::Bytes, bytes.toStdString()); }
    CSql& Value(std::span<const qint64> numbers) { return Numbers(SqlType::Int8s, SqlType::Int8, numbers); }
    CSql& Value(std::span<const std::int32_t> numbers) { return Numbers(SqlType::Int4s, SqlType::Int4, numbers); }
    CSql& Value(std::span<const QByteArray> values)
    {
        std::string bytes = ArrayHead(SqlType::Bytes, values.size());
        for (const QByteArray& value : values) {
            AppendNumber(bytes, static_cast<std::int32_t>(value.size()));
            bytes.append(value.constData(), static_cast<std::size_t>(value.size()));
        }
        return Put(SqlType::BytesMany, std::move(bytes));
    }

    // Has the server keep this statement under a name, by which it is sent from then on, with values each time.
    [[nodiscard]] CSql Preparation(SqlText name) const
    {
        CSql sql("PREPARE ");
        sql.Add(name).Add(" AS ").text_ += text_;
        return sql;
    }

    [[nodiscard]] const std::string& Text() const { return text_; }
    [[nodiscard]] const std::vector<Parameter>& Parameters() const { return parameters_; }

    // What an array begins with, as a parameter and within a row that is copied.
    [[nodiscard]] static std::string ArrayHead(SqlType one, std::size_t count)
    {
        std::string bytes;
        AppendNumber(bytes, std::int32_t{count == 0 ? 0 : 1}); // dimensions
        AppendNumber(bytes, std::int32_t{0});                  // no nulls
        AppendNumber(bytes, static_cast<std::int32_t>(one));
        if (count != 0) {
            AppendNumber(bytes, static_cast<std::int32_t>(count));
            AppendNumber(bytes, std::int32_t{1}); // the first index
        }
        return bytes;
    }

private:
    CSql& Put(SqlType type, std::string bytes)
    {
        parameters_.push_back({type, std::move(bytes)});
        text_ += '$';
        text_ += std::to_string(parameters_.size());
        return *this;
    }
    template <typename Type>
    CSql& Number(SqlType type, Type number)
    {
        std::string bytes;
        AppendNumber(bytes, number);
        return Put(type, std::move(bytes));
    }
    template <typename Type>
    CSql& Numbers(SqlType array, SqlType one, std::span<const Type> numbers)
    {
        std::string bytes = ArrayHead(one, numbers.size());
        for (const Type number : numbers) {
            AppendNumber(bytes, static_cast<std::int32_t>(sizeof number));
            AppendNumber(bytes, number);
        }
        return Put(array, std::move(bytes));
    }

    std::string text_;
    std::vector<Parameter> parameters_;
};

} // namespace partkeep
