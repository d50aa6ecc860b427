// nakos-tool: the monitor's engine without a window (convert, info, plot,
// record). Each sub-command registers itself; see command.h.
#include "command.h"

#include "settings/settings.h"

#include <QDir>
#include <QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

std::vector<const ToolCommand *> &registry() {
    static std::vector<const ToolCommand *> commands;
    return commands;
}

void help() {
    std::vector<const ToolCommand *> commands = registry();
    std::sort(commands.begin(), commands.end(), [](const ToolCommand *a, const ToolCommand *b) {
        return std::strcmp(a->name, b->name) < 0;
    });
    std::fputs("Usage: nakos-tool COMMAND [OPTION]... FILE...\n"
               "The ORLUK Water Monitor's engine without a window.\n\n"
               "Commands:\n",
               stdout);
    for (const ToolCommand *c : commands)
        std::printf("  nakos-tool %s %s\n", c->name, c->usage);
    std::fputs("\n"
               "  -h, --help     show this help and exit (after a command: its usage)\n"
               "  -v, --version  show the version and exit\n\n"
               "Exit status: 0 on success, 1 when the work failed, 2 for a bad command line.\n",
               stdout);
}

bool isHelp(const QString &arg) {
    return arg == QLatin1String("--help") || arg == QLatin1String("-h");
}

} // namespace

ToolCommand::ToolCommand(const char *n, const char *u, Run r, const char *d)
    : name(n), usage(u), run(std::move(r)), details(d) {
    registry().push_back(this);
}

int toolFail(const QString &message) {
    std::fprintf(stderr, "nakos-tool: %s\n", message.toLocal8Bit().constData());
    return 1;
}

int toolUsage(const QString &message, const char *command) {
    toolFail(message);
    if (command)
        std::fprintf(stderr, "Try 'nakos-tool %s%s--help' for more information.\n", command,
                     *command ? " " : "");
    return 2;
}

int main(int argc, char **argv) {
    // The command line is read before any application object exists, so
    // help, version and usage errors never reach the platform layer.
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    if (args.isEmpty())
        return toolUsage(QStringLiteral("missing command"), "");
    const QString name = args.takeFirst();
    if (isHelp(name)) {
        help();
        return 0;
    }
    if (name == QLatin1String("--version") || name == QLatin1String("-v")) {
        std::printf("nakos-tool %s\n", qPrintable(settings::versionText()));
        return 0;
    }
    const auto found = std::find_if(registry().begin(), registry().end(),
                                    [&](auto *c) { return name == QLatin1String(c->name); });
    if (found == registry().end()) {
        return toolUsage(name.startsWith(QLatin1Char('-'))
                             ? QStringLiteral("unknown option '%1'").arg(name)
                             : QStringLiteral("unknown command '%1'").arg(name),
                         "");
    }
    const ToolCommand &command = **found;
    if (std::any_of(args.cbegin(), args.cend(), isHelp)) {
        std::printf("Usage: nakos-tool %s %s\n", command.name, command.usage);
        if (command.details)
            std::printf("%s", command.details);
        return 0;
    }

    // Charts render through QPainter and fonts, which need a GUI application;
    // the offscreen platform keeps the tool usable without a display. The
    // other commands stay clear of the platform layer and its chatter.
    std::unique_ptr<QCoreApplication> app;
    if (std::strcmp(command.name, "plot") == 0) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
            qputenv("XDG_RUNTIME_DIR", QDir::tempPath().toLocal8Bit() + "/nakos-tool-runtime");
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    return command.run(args);
}
