// Number parsing must accept any bytes without reading outside them, and
// the quick path of str_toSingle() must give the float of the full
// conversion (parseSingle) bit for bit, sign of zero included: for the text
// as a whole, and for the prefix readPlainDecimal() stops at, as the data
// file reader takes it. Checked on the bytes as they come and once more
// with every byte mapped to a character of numbers, so that most inputs
// are numbers of some kind.
#include "core/numbers.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace {

bool sameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

float fullParse(const char *begin, const char *end) {
    return parseSingle(std::string_view(begin, size_t(end - begin))).value_or(0.0f);
}

void checkSingle(std::string_view text) {
    if (!sameBits(str_toSingle(text), parseSingle(text).value_or(0.0f)))
        __builtin_trap();
    const char *begin = text.data();
    const char *end = begin + text.size();
    float value = 0.0f;
    if (const char *stop = readPlainDecimal(begin, end, value)) {
        if (!sameBits(value, fullParse(begin, stop)))
            __builtin_trap();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    checkSingle(text);
    (void)parseInteger(text, -32768, 32767);
    (void)leadingNumber(text);

    static constexpr char numberChars[] = "0123456789000000000.,-+eE \t";
    std::string mapped(text);
    for (char &c : mapped)
        c = numberChars[uint8_t(c) % (sizeof numberChars - 1)];
    checkSingle(mapped);
    return 0;
}
