// The settings file reader must take any file without crashing, and what
// it accepts must survive a write and a second read unchanged.
#include "settings/registryfile.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    RegistryFile file;
    if (file.parse(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size))))
        return 0;
    const QByteArray once = file.serialize();
    RegistryFile again;
    if (again.parse(once) || again.serialize() != once)
        std::abort();
    return 0;
}
