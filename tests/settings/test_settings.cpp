// The settings in their registry-format file; the folders made at start-up.
#include "settings/filekey.h"
#include "settings/settings.h"
#include "settings/startupfolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

const QString kKey =
    QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\Velmora-Systems\\NAK_OS PC-Interface 1.43");

QByteArray regFile(const QByteArray &values) {
    return "Windows Registry Editor Version 5.00\r\n\r\n"
           "[HKEY_LOCAL_MACHINE\\Software\\Velmora-Systems\\NAK_OS PC-Interface 1.43]\r\n" +
           values;
}

void write(const QString &path, const QByteArray &bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

// UTF-16 with a byte order mark, as regedit exports.
QByteArray utf16(const QString &text) {
    QByteArray bytes("\xff\xfe");
    for (QChar c : text) {
        bytes += char(c.unicode() & 0xff);
        bytes += char(c.unicode() >> 8);
    }
    return bytes;
}

QByteArray read(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// How the settings file was spoilt, beyond its bytes.
enum class Spoilt { Bytes, Huge, Folder, Unreadable };

} // namespace

class TestSettings : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() {
        QVERIFY(m_dir.isValid());
        // A row may leave a folder, a huge or a damaged file behind.
        QDir(path()).removeRecursively();
        QFile::remove(path());
        QFile::remove(FileRegistryKey::damagedCopyPath(path()));
    }

    // The documented section as a first run writes it; the station section
    // follows it in a section of its own and leaves it byte for byte.
    void firstRunWritesTheDefaults() {
        QCOMPARE(settings::versionText(205), QStringLiteral("2.05"));
        FileRegistryKey key(path(), kKey);
        DisplayFlags flags;
        bool percent = false;
        StationSettings station;
        QVERIFY(settings::readRegistry(key, flags, percent)); // no key yet
        StationSettings on;
        on.compareHour = true;
        settings::writeStation(key, on); // not before the program's key
        QVERIFY(!QFile::exists(path()));
        settings::writeRegistry(key, flags, percent);
        settings::writeAutosavePath(key, QStringLiteral("C:\\data\\autosave\\"));
        const QByteArray documented = read(path());
        QVERIFY(settings::readStation(key, station));
        on.telemetryOn = true;
        on.mqttUrl = QStringLiteral("mqtts://ship1@broker.example:8883");
        on.mqttPasswordFile = QStringLiteral("/etc/nakos-monitor/ship1.pass");
        settings::writeStation(key, on);
        settings::writeRegistry(key, flags, percent);
        QCOMPARE(read(path()),
                 documented + "\r\n[" + kKey.toLatin1() +
                     "\\Station]\r\n\"CompareHour\"=hex:01\r\n\"Telemetry\"=hex:01\r\n"
                     "\"MqttUrl\"=\"mqtts://ship1@broker.example:8883\"\r\n"
                     "\"SensorId\"=\"\"\r\n\"MqttPrefix\"=\"\"\r\n\"MqttCaFile\"=\"\"\r\n"
                     "\"MqttPasswordFile\"=\"/etc/nakos-monitor/ship1.pass\"\r\n"
                     "\"Modbus\"=hex:00\r\n\"ModbusAddress\"=\"0.0.0.0\"\r\n"
                     "\"ModbusPort\"=dword:000005de\r\n\"ModbusUnit\"=dword:00000001\r\n");
        QVERIFY(!settings::readStation(key, station));
        QVERIFY(station.compareHour && station.telemetryOn);
        QCOMPARE(station.mqttUrl, on.mqttUrl);
        QCOMPARE(station.mqttPasswordFile, on.mqttPasswordFile);
        settings::writeStation(key, StationSettings());
        QVERIFY(!settings::readStation(key, station));
        QVERIFY(!station.compareHour && !station.telemetryOn && station.mqttUrl.isEmpty());
        QCOMPARE(documented, regFile("\"DisplayWater\"=hex:01\r\n"
                                     "\"DisplayTemperature\"=hex:01\r\n"
                                     "\"DisplayPressure\"=hex:01\r\n"
                                     "\"DisplaySoot\"=hex:00\r\n"
                                     "\"PrintWater\"=hex:01\r\n"
                                     "\"PrintTemperature\"=hex:00\r\n"
                                     "\"PrintPressure\"=hex:00\r\n"
                                     "\"WaterDisplayPercent\"=hex:00\r\n"
                                     "\"Version\"=dword:0000008f\r\n"
                                     "\"AutosavePath\"=\"C:\\\\data\\\\autosave\\\\\"\r\n"));
        QCOMPARE(settings::readAutosavePath(key), QStringLiteral("C:\\data\\autosave\\"));
        // A path of 255 characters or more reads as none.
        for (const int length : {0, 254, 255, 300}) {
            const QString folder(length, QLatin1Char('a'));
            settings::writeAutosavePath(key, folder);
            QCOMPARE(settings::readAutosavePath(key), length < 255 ? folder : QString());
        }
    }

    // Read as written and as regedit exports (UTF-16 with a byte order mark).
    void flagBytes() {
        const QByteArray text =
            regFile("\"DisplayWater\"=hex:00\r\n\"DisplaySoot\"=hex:02\r\n"
                    "\"PrintPressure\"=hex:ff\r\n\"WaterDisplayPercent\"=hex:01\r\n"
                    "\"PrintWater\"=hex:01,00\r\n\"DisplayPressure\"=dword:00000000\r\n"
                    "\"AutosavePath\"=\"D:\\\\auto\\\\\"\r\n");
        for (const QByteArray &bytes : {text, utf16(QString::fromLatin1(text))}) {
            write(path(), bytes);
            FileRegistryKey key(path(), kKey);
            DisplayFlags flags;
            bool percent = false;
            QVERIFY(!settings::readRegistry(key, flags, percent));
            QVERIFY(!flags.displayWater);
            QVERIFY(flags.displaySoot);   // any byte above 0 is on
            QVERIFY(flags.printPressure); // 0xff too
            QVERIFY(percent);
            // Values that are not a single byte leave the flag as it was.
            QVERIFY(flags.printWater && flags.displayPressure);
            QVERIFY(flags.displayTemperature); // missing
            QCOMPARE(settings::readAutosavePath(key), QStringLiteral("D:\\auto\\"));
        }
    }

    void unusableFilesActAsMissingKey_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<Spoilt>("spoilt");
        QTest::addColumn<bool>("keptAside"); // as .damaged before the first write
        const auto row = [](const char *name, const QByteArray &content, bool keptAside,
                            Spoilt spoilt = Spoilt::Bytes) {
            QTest::newRow(name) << content << spoilt << keptAside;
        };
        row("garbage", QByteArray("\x01\x02garbage\xff\0\xfe", 12), true);
        row("no header", "[HKEY_LOCAL_MACHINE\\x]\r\n\"A\"=hex:01\r\n", true);
        row("broken value", regFile("\"DisplaySoot\"=hex:0\r\n"), true);
        row("unterminated string", regFile("\"AutosavePath\"=\"C:\\\\x\r\n"), true);
        row("value before any key",
            "Windows Registry Editor Version 5.00\r\n\"DisplaySoot\"=hex:01\r\n", true);
        // Text that could not be written back as it was read.
        row("Latin-1 byte", regFile("\"AutosavePath\"=\"C:\\\\M\xfcller\\\\\"\r\n"), true);
        const QString text = QString::fromLatin1(regFile("\"AutosavePath\"=\"C:\\"));
        row("UTF-16 lone surrogate", utf16(text + QChar(0xd800) + QStringLiteral("\"\r\n")), true);
        row("UTF-16 odd byte", utf16(text + QStringLiteral("x\"\r\n")) + 'x', true);
        // Registry text just over the size limit: not read, kept aside.
        QByteArray padded = regFile("\"DisplaySoot\"=hex:01\r\n");
        padded += QByteArray(FileRegistryKey::maxFileSize + 1 - padded.size(), ';');
        row("over the size limit", padded, true);
        row("100 MB", {}, true, Spoilt::Huge);
        row("unreadable", regFile("\"DisplaySoot\"=hex:01\r\n"), true, Spoilt::Unreadable);
        // Nothing to keep: replaced as it is.
        row("empty", {}, false);
        row("other key only",
            "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\"
            "Software\\Velmora-Systems\\NAK_OS PC-Interface 1.42]\r\n\"DisplaySoot\"=hex:01\r\n",
            false);
        // Not a file: left alone, and the settings last for the run only.
        row("folder", {}, false, Spoilt::Folder);
    }

    void unusableFilesActAsMissingKey() {
        QFETCH(QByteArray, content);
        QFETCH(Spoilt, spoilt);
        QFETCH(bool, keptAside);
        const QString kept = FileRegistryKey::damagedCopyPath(path());
        write(kept, "an older copy");
        if (spoilt == Spoilt::Folder) {
            QVERIFY(QDir().mkpath(path() + QStringLiteral("/inside")));
        } else {
            write(path(), content);
            QFile f(path());
            if (spoilt == Spoilt::Huge)
                QVERIFY(f.resize(100 * 1024 * 1024)); // sparse: no 100 MB written
            if (spoilt == Spoilt::Unreadable) {
#ifdef Q_OS_UNIX
                if (::geteuid() == 0)
                    QSKIP("root reads any file");
#endif
                QVERIFY(f.setPermissions(QFileDevice::WriteOwner));
            }
        }
        const qint64 size = QFileInfo(path()).size();

        FileRegistryKey key(path(), kKey);
        DisplayFlags flags;
        bool percent = false;
        QVERIFY(settings::readRegistry(key, flags, percent));
        QVERIFY(!flags.displaySoot);
        QVERIFY(settings::readAutosavePath(key).isEmpty());
        flags.displaySoot = true;
        settings::writeRegistry(key, flags, percent);

        if (spoilt == Spoilt::Folder) {
            QVERIFY(QFileInfo(path()).isDir());
            QCOMPARE(read(kept), QByteArray("an older copy"));
            QVERIFY(settings::readRegistry(key, flags, percent));
            return;
        }
        // Writing gives a readable file again, and the unusable one is kept.
        DisplayFlags again;
        QVERIFY(!settings::readRegistry(key, again, percent));
        QVERIFY(again.displaySoot);
        if (keptAside) {
            QCOMPARE(QFileInfo(kept).size(), size);
            if (spoilt == Spoilt::Bytes)
                QCOMPARE(read(kept), content);
        } else {
            QCOMPARE(read(kept), QByteArray("an older copy"));
        }
    }

    void otherKeysAndValuesSurviveAWrite() {
        write(path(), regFile("\"ComPort1\"=\"/dev/ttyUSB0\"\r\n\"Odd\"=hex(2):41,00\r\n") +
                          "\r\n[HKEY_CURRENT_USER\\Other]\r\n\"Keep\"=\"me\"\r\n");
        FileRegistryKey key(path(), kKey);
        settings::writeRegistry(key, DisplayFlags(), false);
        const QByteArray after = read(path());
        QVERIFY(after.contains("[HKEY_CURRENT_USER\\Other]\r\n\"Keep\"=\"me\"\r\n"));
        QVERIFY(after.contains("\"ComPort1\"=\"/dev/ttyUSB0\"\r\n\"Odd\"=hex(2):41,00\r\n"));
        QVERIFY(after.contains("\"DisplayWater\"=hex:01\r\n"));
        QCOMPARE(settings::comPortDevice(key, 1), QStringLiteral("/dev/ttyUSB0"));
        QVERIFY(settings::comPortDevice(key, 2).isEmpty());
    }

    void startUpFolders_data() {
        QTest::addColumn<bool>("trailingSeparator");
        QTest::addColumn<QString>("stored"); // the autosave folder in the settings before
        QTest::newRow("without separator") << false << QString();
        QTest::newRow("with separator") << true << QString();
        QTest::newRow("stored folder kept") << false << QStringLiteral("/somewhere/else/");
    }

    void startUpFolders() {
        QFETCH(bool, trailingSeparator);
        QFETCH(QString, stored);
        QTemporaryDir work;
        FileRegistryKey key(path(), kKey);
        if (!stored.isEmpty())
            settings::writeAutosavePath(key, stored);
        QString dir = QDir::toNativeSeparators(work.path());
        const QString sep = QDir::separator();
        const QString data = dir + sep + QStringLiteral("data") + sep;
        if (trailingSeparator)
            dir += sep;
        auto store = std::make_unique<MeasurementStore>();
        prepareFolders(*store, dir, key);
        QCOMPARE(store->path_base, work.path() + sep);
        QCOMPARE(store->path_data, data);
        const QString autosave = data + QStringLiteral("autosave") + sep;
        QCOMPARE(store->path_autosave, stored.isEmpty() ? autosave : stored);
        QCOMPARE(QDir(autosave).exists(), stored.isEmpty());
        QVERIFY(QDir(data).exists());
        QCOMPARE(settings::readAutosavePath(key), store->path_autosave);
        uint32_t version = 0;
        QVERIFY(!key.open());
        QVERIFY(!key.queryDword(QStringLiteral("Version"), version));
        key.close();
        QCOMPARE(version, 143u);
    }

private:
    QString path() const {
        return m_dir.filePath(QStringLiteral("settings.reg"));
    }
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestSettings)
#include "test_settings.moc"
