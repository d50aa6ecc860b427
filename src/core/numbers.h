#pragma once

#include <QChar>
#include <QString>

#include <cstdint>
#include <optional>
#include <string_view>

// Number parsing shared by the sensor protocol and the file readers. Every
// number is read after its decimal separator is normalised, so "12,5" and
// "12.5" both read as 12.5 whatever the locale; a text that does not convert
// yields 0. Parsing itself is locale-independent and allocation-free.

// Parses a 32-bit float from text with "," or "." as decimal separator.
// Leading and trailing blanks are allowed; anything else that is not part
// of the number makes the result 0.
float str_toSingle(std::string_view text);
float str_toSingle(QStringView text);

// Strict parse of the whole text (blanks around it allowed): nothing on
// failure. str_toSingle() is this with failures read as 0.
std::optional<float> parseSingle(std::string_view text);

// Whole-number parse (optional sign, digits, blanks around) into the range
// [lo, hi]; nothing when the text is not such a number or out of range.
std::optional<int32_t> parseInteger(std::string_view text, int32_t lo, int32_t hi);
std::optional<int32_t> parseInteger(QStringView text, int32_t lo, int32_t hi);

// The leading digits of the text as a number, 0 when there are none: the
// plain numeric conversion used for date and time fields of data files.
int32_t leadingNumber(std::string_view text);

// The system's decimal separator: 2.5 (computed as 5 / 2) formatted with
// one decimal in the system locale; "," when the result holds one.
QChar detectDecimalSeparator();
