// Number parsing must accept any bytes without reading outside them.
#include "core/numbers.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    (void)str_toSingle(text);
    (void)parseInteger(text, -32768, 32767);
    (void)leadingNumber(text);
    return 0;
}
