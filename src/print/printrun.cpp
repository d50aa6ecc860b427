#include "print/printrun.h"

#include "settings/settings.h"

#include <QFileInfo>

std::vector<ChartQuantity> print_selection(const DisplayFlags &flags) {
    std::vector<ChartQuantity> charts;
    if (flags.printWater)
        charts.push_back(ChartQuantity::Water);
    if (flags.printTemperature)
        charts.push_back(ChartQuantity::Temperature);
    if (flags.printPressure)
        charts.push_back(ChartQuantity::Pressure);
    return charts;
}

std::vector<ChartQuantity> print_charts(const DisplayFlags &flags, const PrintSetup &setup,
                                        ChartPrinter &printer,
                                        const ChartDocumentPrinter &printChart) {
    std::vector<ChartQuantity> printed;
    for (const ChartQuantity q : print_selection(flags)) {
        QPaintDevice *device = printer.print_document(q, int(printed.size()), setup);
        if (device && !printChart(q, *device))
            printed.push_back(q);
    }
    return printed;
}

QString print_quantityName(ChartQuantity q) {
    switch (q) {
    case ChartQuantity::Water:
        return QStringLiteral("water");
    case ChartQuantity::Pressure:
        return QStringLiteral("pressure");
    case ChartQuantity::Temperature:
        return QStringLiteral("temperature");
    case ChartQuantity::Soot:
        break;
    }
    return QStringLiteral("soot");
}

QString print_documentFileName(const QString &chosen, int index, ChartQuantity q) {
    if (index == 0 || chosen.isEmpty())
        return chosen;
    // Only the file name's last extension moves behind the suffix; dots in
    // folder names and earlier dots in the name stay where they are.
    const QFileInfo info(chosen);
    const QString suffix = info.suffix();
    const QString name = info.fileName();
    const qsizetype cut = suffix.isEmpty() ? name.size() : name.size() - suffix.size() - 1;
    const QString folder = chosen.left(chosen.size() - name.size());
    return folder + name.left(cut) + QLatin1Char('-') + print_quantityName(q) + name.mid(cut);
}
