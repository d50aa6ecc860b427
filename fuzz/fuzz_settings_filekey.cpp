// The settings store over a real file: whatever the file holds, the start-up
// reads (flags, autosave folder, port) must not crash, a write afterwards
// must leave a file that reads back exactly what was written, an unusable
// file must be kept as <name>.damaged, and a usable one must keep its other
// keys. The input is the file's content.
#include "settings/filekey.h"
#include "settings/settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdlib>
#include <memory>

namespace {

void check(bool ok) {
    if (!ok)
        std::abort();
}

QByteArray readAll(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Files go to memory where the system has such a folder: a write and a
// rename per input would wear a disk and slow the run.
QString scratchFolder() {
    const QFileInfo shm(QStringLiteral("/dev/shm"));
    return shm.isDir() && shm.isWritable() ? shm.filePath() : QDir::tempPath();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static QTemporaryDir dir(scratchFolder() + QStringLiteral("/nakos-fuzz-XXXXXX"));
    check(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("settings.reg"));
    const QString kept = FileRegistryKey::damagedCopyPath(path);
    const QString fullKey = QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath();
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QFile::remove(kept);
    {
        QFile f(path);
        check(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        check(f.write(bytes) == bytes.size());
    }
    RegistryFile before;
    const bool unusable =
        !bytes.isEmpty() && (bytes.size() > FileRegistryKey::maxFileSize || before.parse(bytes));

    FileRegistryKey key(path, fullKey);
    DisplayFlags flags;
    bool percent = false;
    const bool missing = settings::readRegistry(key, flags, percent);
    check(!missing || !before.section(fullKey) || unusable);
    (void)settings::readAutosavePath(key);
    (void)settings::comPortDevice(key, 1);

    // Write the opposite of what was read, so every flag changes.
    DisplayFlags written;
    written.displayWater = !flags.displayWater;
    written.displayTemperature = !flags.displayTemperature;
    written.displayPressure = !flags.displayPressure;
    written.displaySoot = !flags.displaySoot;
    written.printWater = !flags.printWater;
    written.printTemperature = !flags.printTemperature;
    written.printPressure = !flags.printPressure;
    settings::writeRegistry(key, written, !percent);
    const QString folder = QStringLiteral("/data/auto\\\"save\"/");
    settings::writeAutosavePath(key, folder);

    DisplayFlags read;
    bool readPercent = percent;
    check(!settings::readRegistry(key, read, readPercent));
    check(read.displayWater == written.displayWater &&
          read.displayTemperature == written.displayTemperature &&
          read.displayPressure == written.displayPressure &&
          read.displaySoot == written.displaySoot && read.printWater == written.printWater &&
          read.printTemperature == written.printTemperature &&
          read.printPressure == written.printPressure && readPercent == !percent);
    check(settings::readAutosavePath(key) == folder);

    check(QFileInfo::exists(kept) == unusable);
    if (unusable) {
        check(readAll(kept) == bytes);
        return 0;
    }
    // Every other key of a usable file is still there with all its values.
    RegistryFile after;
    check(!after.parse(readAll(path)));
    for (const RegistryFile::Section &was : before.sections()) {
        const RegistryFile::Section *now = after.section(was.key);
        check(now != nullptr);
        if (was.key.compare(fullKey, Qt::CaseInsensitive) != 0)
            check(now->values.size() == was.values.size());
    }
    return 0;
}
