// The settings file reader must take any file without crashing, and what
// it accepts must be written back without losing anything: the keys and
// values read again from the written text are the ones first read (and a
// second write gives the same bytes).
#include "settings/registryfile.h"

#include <cstdlib>

namespace {

void check(bool ok) {
    if (!ok)
        std::abort();
}

bool sameValue(const RegistryFile::Value &a, const RegistryFile::Value &b) {
    return a.name == b.name && a.type == b.type && a.binary == b.binary && a.dword == b.dword &&
           a.string == b.string && a.rawLine == b.rawLine;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    RegistryFile file;
    if (file.parse(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size))))
        return 0;
    const QByteArray once = file.serialize();
    RegistryFile again;
    check(!again.parse(once) && again.serialize() == once);
    check(again.sections().size() == file.sections().size());
    for (qsizetype s = 0; s < file.sections().size(); ++s) {
        const RegistryFile::Section &a = file.sections()[s];
        const RegistryFile::Section &b = again.sections()[s];
        check(a.key == b.key && a.values.size() == b.values.size());
        for (qsizetype v = 0; v < a.values.size(); ++v)
            check(sameValue(a.values[v], b.values[v]));
    }
    return 0;
}
