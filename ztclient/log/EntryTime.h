#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// When the entries of a log were written.
namespace entryTime {

/// Milliseconds since 1970 in universal time, from "2026-11-26", "2026-11-26 14:03", "…T14:03:07.250Z",
/// "…+01:00"; or from nine to fifteen digits, which are seconds up to eleven of them and milliseconds from
/// twelve on. What says no zone is taken for universal time. Nothing for any other text.
std::optional<int64_t> parse(std::string_view text);

/// "2026-11-26 14:03:07.250", without a fraction of 0.
std::string text(int64_t milliseconds);

/// Whether pairs of this name say when their entry was written: time, date, datetime or timestamp.
bool isName(std::string_view name);

}  // namespace entryTime
