// The settings dialog's soot box rule, OK and captions.
#include "settings/filekey.h"
#include "settings/ui/settingsdialog.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>

class TestSettingsDialog : public QObject {
    Q_OBJECT
private Q_SLOTS:

    void sootBoxAlwaysOpensUnchecked() {
        FileRegistryKey k = key();
        DisplayFlags on;
        on.displaySoot = true;
        on.printPressure = true;
        settings::writeRegistry(k, on, true);

        DisplayFlags flags;
        bool percent = false;
        QVERIFY(!settings::readRegistry(k, flags, percent));
        SettingsDialog dlg(k, flags, percent);
        QVERIFY(flags.displaySoot);                   // the chart is shown...
        QVERIFY(!dlg.Check_displaySoot->isChecked()); // ...but the box opens unchecked
        QVERIFY(dlg.Check_printPressure->isChecked());
        QVERIFY(dlg.Option_displayWater_percent->isChecked());
        QVERIFY(!dlg.Option_displayWater_ppm->isChecked());

        // Closing without OK keeps flags and file; OK then stores soot off.
        dlg.reject();
        QVERIFY(flags.displaySoot);
        dlg.Check_displayWater->setChecked(false);
        dlg.Command_OK->click();
        QVERIFY(!dlg.isVisible());
        QVERIFY(!flags.displaySoot);
        QVERIFY(!flags.displayWater);
        DisplayFlags stored;
        bool storedPercent = false;
        QVERIFY(!settings::readRegistry(k, stored, storedPercent));
        QVERIFY(!stored.displaySoot);
        QVERIFY(!stored.displayWater);
        QVERIFY(storedPercent);
    }

    void captions() {
        FileRegistryKey k = key();
        DisplayFlags flags;
        bool percent = false;
        SettingsDialog dlg(k, flags, percent);
        QCOMPARE(dlg.windowTitle(), QStringLiteral("Settings"));
        QStringList frames;
        for (QGroupBox *g : dlg.findChildren<QGroupBox *>())
            frames << g->title();
        QCOMPARE(frames, (QStringList{QStringLiteral("Display"), QStringLiteral("Printing")}));
        QCOMPARE(dlg.Option_displayWater_ppm->text(), QStringLiteral("PPM display"));
        QCOMPARE(dlg.Option_displayWater_percent->text(), QStringLiteral("% display"));
        QCOMPARE(dlg.Check_displayTemperature->text(), QStringLiteral("Temperature"));
        QCOMPARE(dlg.Command_OK->text(), QStringLiteral("OK"));
        QCOMPARE(dlg.findChildren<QPushButton *>().size(), 1); // no Cancel
    }

private:
    QString path() const { return m_dir.filePath(QStringLiteral("s.reg")); }
    FileRegistryKey key() const {
        return FileRegistryKey(path(), QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath());
    }
    QTemporaryDir m_dir;
};

QTEST_MAIN(TestSettingsDialog)
#include "test_settingsdialog.moc"
