// nakos-tool plot: the chart of one quantity as a picture for reports, the
// 800 x 600 page the printer would get, without a window.
#include "command.h"
#include "inputs.h"

#include "chart/chartrender.h"
#include "chart/chartstyle.h"
#include "chart/displayfill.h"
#include "core/store.h"
#include "print/printpage.h"

#include <QFileInfo>
#include <QImage>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>

#include <array>
#include <memory>
#include <optional>

namespace {

std::optional<ChartQuantity> parseQuantity(const QString &name) {
    static const std::pair<const char *, ChartQuantity> names[] = {
        {"water", ChartQuantity::Water},
        {"pressure", ChartQuantity::Pressure},
        {"temperature", ChartQuantity::Temperature},
        {"soot", ChartQuantity::Soot},
    };
    for (const auto &[text, q] : names) {
        if (name == QLatin1String(text))
            return q;
    }
    return std::nullopt;
}

// One PDF page of exactly the chart page's size (800 x 600 pixels at 96
// dpi, 600 x 450 points), drawn as vectors.
bool writePdf(ChartModel &chart, const QString &fileName) {
    const ChartGeometry g = ChartGeometry::page();
    QPdfWriter writer(fileName);
    writer.setResolution(96);
    writer.setCreator(QStringLiteral("nakos-tool"));
    writer.setTitle(chart.title);
    const QPageSize size(QSizeF(g.width * 72.0 / 96.0, g.height * 72.0 / 96.0), QPageSize::Point,
                         QString(), QPageSize::ExactMatch);
    writer.setPageLayout(QPageLayout(size, QPageLayout::Portrait, QMarginsF()));
    QPainter painter;
    if (!painter.begin(&writer))
        return true;
    print_paintPage(chart, painter, QRectF(0, 0, writer.width(), writer.height()));
    return !painter.end();
}

int plot(const QStringList &args) {
    ChartQuantity quantity = ChartQuantity::Water;
    InputKind kind = InputKind::DataFile;
    QStringList files;
    for (int i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        if (a == QLatin1String("--log")) {
            kind = InputKind::LogFile;
        } else if (a == QLatin1String("--quantity")) {
            const std::optional<ChartQuantity> q =
                i + 1 < args.size() ? parseQuantity(args[i + 1]) : std::nullopt;
            if (!q)
                return toolUsage(QStringLiteral(
                    "plot: --quantity needs one of water, pressure, temperature, soot"));
            quantity = *q;
            ++i;
        } else if (a.startsWith(QLatin1String("--"))) {
            return toolUsage(QStringLiteral("plot: unknown option '%1'").arg(a), "plot");
        } else {
            files << a;
        }
    }
    if (files.size() != 2)
        return toolUsage(QStringLiteral("plot: expected INPUT and OUTPUT"), "plot");
    const QString &input = files[0];
    const QString &output = files[1];

    auto store = std::make_unique<MeasurementStore>();
    const QString failure = loadInputs(*store, {input}, kind, false);
    if (!failure.isEmpty())
        return toolFail(QStringLiteral("plot: ") + failure);

    // All four charts are filled, exactly as the display refresh fills them;
    // the chosen one is drawn.
    std::array<ChartModel, chart_quantityCount> charts;
    DisplayCharts models;
    for (int i = 0; i < chart_quantityCount; ++i) {
        chart_applyStyle(charts[size_t(i)], ChartQuantity(i), store->waterDisplayPercent);
        models[size_t(i)] = &charts[size_t(i)];
    }
    display_refreshModels(*store, models);
    ChartModel &chart = charts[size_t(quantity)];

    if (QFileInfo(output).suffix().compare(QLatin1String("pdf"), Qt::CaseInsensitive) == 0) {
        if (writePdf(chart, output))
            return toolFail(QStringLiteral("plot: cannot write '%1'").arg(output));
        return 0;
    }
    const QImage page = chart_pageImage(chart);
    if (page.isNull() || !page.save(output, "PNG"))
        return toolFail(QStringLiteral("plot: cannot write '%1'").arg(output));
    return 0;
}

const ToolCommand
    plotCommand("plot", "[--log] [--quantity water|pressure|temperature|soot] INPUT OUTPUT", plot);

} // namespace
