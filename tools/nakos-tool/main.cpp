// nakos-tool: the monitor's engine without a window (convert, info, plot,
// record). Each sub-command registers itself; see command.h.
#include "command.h"

#include <QDir>
#include <QGuiApplication>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

std::vector<const ToolCommand *> &registry() {
    static std::vector<const ToolCommand *> commands;
    return commands;
}

void usage() {
    std::fputs("usage:\n", stderr);
    for (const ToolCommand *c : registry())
        std::fprintf(stderr, "  nakos-tool %s %s\n", c->name, c->usage);
}

} // namespace

ToolCommand::ToolCommand(const char *n, const char *u, Run r)
    : name(n), usage(u), run(std::move(r)) {
    registry().push_back(this);
}

int toolFail(const QString &message) {
    std::fprintf(stderr, "nakos-tool: %s\n", message.toLocal8Bit().constData());
    return 1;
}

int main(int argc, char **argv) {
    // Charts render through QPainter and fonts, which need a GUI application;
    // the offscreen platform keeps the tool usable without a display. The
    // other commands stay clear of the platform layer and its chatter.
    std::unique_ptr<QCoreApplication> app;
    if (argc > 1 && std::strcmp(argv[1], "plot") == 0) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
            qputenv("XDG_RUNTIME_DIR", QDir::tempPath().toLocal8Bit() + "/nakos-tool-runtime");
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    QStringList args = app->arguments();
    args.removeFirst();
    if (args.isEmpty() || args.first() == QLatin1String("--help")) {
        usage();
        return args.isEmpty() ? 2 : 0;
    }
    const QString name = args.takeFirst();
    for (const ToolCommand *c : registry()) {
        if (name == QLatin1String(c->name))
            return c->run(args);
    }
    toolFail(QStringLiteral("unknown command '%1'").arg(name));
    usage();
    return 2;
}
