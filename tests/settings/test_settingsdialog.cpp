// The settings dialog.
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

    // The soot box opens unchecked whatever the setting; the captions.
    void sootBoxAndCaptions() {
        QTemporaryDir dir;
        FileRegistryKey k(dir.filePath(QStringLiteral("s.reg")),
                          QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath());
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
};

QTEST_MAIN(TestSettingsDialog)
#include "test_settingsdialog.moc"
