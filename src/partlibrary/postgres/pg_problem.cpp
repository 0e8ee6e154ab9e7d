#include "partlibrary/postgres/pg_problem.h"

#include "partlibrary/postgres/pg_waits.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

namespace partkeep {

namespace {

LibraryFault FaultOfState(std::string_view state)
{
    static constexpr std::array<std::pair<std::string_view, LibraryFault>, 14> faults{{
        {"55P03", LibraryFault::Busy},
        {"40", LibraryFault::Busy},
        {"57014", LibraryFault::NoAnswer},
        {"53100", LibraryFault::DiskFull},
        {"53200", LibraryFault::NoMemory},
        {"53", LibraryFault::NoAnswer},
        {"42501", LibraryFault::ReadOnly},
        {"25006", LibraryFault::ReadOnly},
        {"42P01", LibraryFault::NotFound},
        {"3F", LibraryFault::NotFound},
        {"3D", LibraryFault::NotFound},
        {"58", LibraryFault::ReadFailed},
        {"XX", LibraryFault::Damaged},
        {"42P06", LibraryFault::AlreadyThere},
    }};
    const auto* const found =
        std::find_if(faults.begin(), faults.end(), [&](const auto& fault) { return state.starts_with(fault.first); });
    return found != faults.end() ? found->second : IsLoss(state) ? LibraryFault::NoAnswer : LibraryFault::Failed;
}

} // namespace

bool IsTimeOut(std::string_view state)
{
    return state == "55P03" || state == "57014";
}

bool IsConflict(std::string_view state)
{
    return state == "40001";
}

bool IsLoss(std::string_view state)
{
    return state.empty() || state.starts_with("57P") || state.starts_with("08");
}

LibraryProblem PgProblem(const CPgResult& error, const PgPlace& place, bool reads, std::string_view otherwise)
{
    const std::string_view state = error.ErrorField(PG_DIAG_SQLSTATE);
    const LibraryFault fault = reads && IsConflict(state) ? LibraryFault::NoAnswer : FaultOfState(state);
    const std::string_view text = error.ErrorField(PG_DIAG_MESSAGE_PRIMARY);
    return {fault == LibraryFault::ReadOnly && reads ? LibraryFault::Refused : fault, place.Text(),
            OneLine(text.empty() ? otherwise : text)};
}

// Of several hosts each has said something: whom one refuses, the others do not help by being away.
LibraryProblem PgConnectProblem(std::string_view text, const PgPlace& place, bool spoke)
{
    static const QRegularExpression before_message(QStringLiteral(":  ([0-9A-Z]{5}): ")); // "FATAL:  28P01: ..."
    static const QRegularExpression place_in_source(QStringLiteral("\\n[^\\n]*\\.c:[0-9]+(?=\\n|$)"));
    QString told = FromUtf8(text);
    std::optional<bool> refused;
    for (auto match = before_message.globalMatch(told); match.hasNext();) {
        const std::string state = ToUtf8(match.next().captured(1));
        const bool passes = IsLoss(state) || state.starts_with("53");
        refused = refused.value_or(false) || !passes;
    }
    told.replace(before_message, QStringLiteral(":  ")).remove(place_in_source);
    return {refused.value_or(spoke) ? LibraryFault::Refused : LibraryFault::NoAnswer, place.Text(), told.simplified()};
}

} // namespace partkeep
