// nakos-icon-render OUTDIR SIZE...: writes the program's icon, as the
// program draws it, to OUTDIR/<size>x<size>/apps/nakos-monitor.png for the
// desktop's icon theme. Run while building, under the offscreen platform.
#include "gui/appicon.h"

#include <QDir>
#include <QGuiApplication>
#include <QPixmap>

#include <cstdio>

int main(int argc, char **argv) {
    QGuiApplication app(argc, argv);
    QStringList args = QGuiApplication::arguments();
    if (args.size() < 3) {
        std::fputs("usage: nakos-icon-render OUTDIR SIZE...\n", stderr);
        return 2;
    }
    args.removeFirst();
    const QDir out(args.takeFirst());
    const QIcon icon = appIcon();
    for (const QString &arg : std::as_const(args)) {
        const int size = arg.toInt();
        const QPixmap pixmap = icon.pixmap(QSize(size, size));
        // QIcon hands out a smaller drawing when it has none of this size;
        // a theme folder must hold the size it is named after.
        if (pixmap.size() != QSize(size, size)) {
            std::fprintf(stderr, "nakos-icon-render: the icon has no %d x %d drawing\n", size,
                         size);
            return 1;
        }
        const QString folder = QStringLiteral("%1x%1/apps").arg(size);
        const QString file = out.filePath(folder + QStringLiteral("/nakos-monitor.png"));
        if (!out.mkpath(folder) || !pixmap.save(file, "PNG")) {
            std::fprintf(stderr, "nakos-icon-render: cannot write %s\n", qPrintable(file));
            return 1;
        }
    }
    return 0;
}
