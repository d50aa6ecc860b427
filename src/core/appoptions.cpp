#include "core/appoptions.h"

#include "core/numbers.h"

#include <array>

namespace {

// Options QGuiApplication and QApplication read themselves, with one dash or
// two, as "-name value" or "-name=value".
constexpr std::array qtValueOptions = {
    "platform",    "platformpluginpath", "platformtheme", "plugin", "qwindowgeometry",
    "qwindowicon", "qwindowtitle",       "session",       "style",  "stylesheet",
    "display",     "geometry",           "name",          "title",  "visual"};
constexpr std::array qtFlagOptions = {"reverse", "widgetcount", "nograb",
                                      "dograb",  "sync",        "testability"};

template <size_t N> bool listed(const std::array<const char *, N> &names, QStringView name) {
    for (const char *n : names) {
        if (name == QLatin1String(n))
            return true;
    }
    return false;
}

AppOptions failed(const QString &error, bool usageHint) {
    AppOptions o;
    o.action = AppOptions::Action::Fail;
    o.error = error;
    o.usageHint = usageHint;
    return o;
}

} // namespace

AppOptions parseAppOptions(const QStringList &arguments) {
    AppOptions options;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &arg = arguments[i];
        if (optionsEnded || !arg.startsWith(QLatin1Char('-'))) {
            options.files << arg;
            continue;
        }
        if (arg == QLatin1String("-")) // no reading from standard input
            return failed(QStringLiteral("unexpected argument '%1'").arg(arg), true);
        if (arg == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            options.action = AppOptions::Action::Help;
            return options;
        }
        if (arg == QLatin1String("-v") || arg == QLatin1String("--version")) {
            options.action = AppOptions::Action::Version;
            return options;
        }

        const bool longForm = arg.startsWith(QLatin1String("--"));
        const qsizetype eq = arg.indexOf(QLatin1Char('='));
        const QStringView name =
            QStringView(arg).mid(longForm ? 2 : 1, eq < 0 ? -1 : eq - (longForm ? 2 : 1));
        const bool hasInlineValue = eq >= 0;

        if (listed(qtValueOptions, name)) {
            if (!hasInlineValue)
                ++i; // Qt takes the next argument as the value, whatever it is
            continue;
        }
        if (listed(qtFlagOptions, name) && !hasInlineValue)
            continue;
        if (!longForm)
            return failed(QStringLiteral("unknown option '%1'").arg(arg), true);

        if (name == QLatin1String("demo") || name == QLatin1String("start-query")) {
            if (hasInlineValue)
                return failed(QStringLiteral("option '--%1' takes no value").arg(name), true);
            (name == QLatin1String("demo") ? options.demo : options.startQuery) = true;
        } else if (name == QLatin1String("port") || name == QLatin1String("query-interval")) {
            const bool port = name == QLatin1String("port");
            QString value;
            if (hasInlineValue) {
                value = arg.mid(eq + 1);
            } else if (i + 1 < arguments.size()) {
                value = arguments[++i];
            } else {
                return failed(QStringLiteral("option '--%1' needs a value").arg(name), true);
            }
            const int low = port ? AppOptions::firstPort : AppOptions::minInterval_ms;
            const int high = port ? AppOptions::lastPort : AppOptions::maxInterval_ms;
            const std::optional<int32_t> n = parseInteger(QStringView(value), low, high);
            if (!n)
                return failed(QStringLiteral("--%1 takes a %2 from %3 to %4, not '%5'")
                                  .arg(name)
                                  .arg(port ? QStringLiteral("port number")
                                            : QStringLiteral("period in milliseconds"))
                                  .arg(low)
                                  .arg(high)
                                  .arg(value),
                              false);
            (port ? options.port : options.queryInterval_ms) = *n;
        } else {
            return failed(QStringLiteral("unknown option '%1'").arg(arg), true);
        }
    }
    return options;
}

QString appOptionsHelp() {
    return QStringLiteral(
        "Usage: nakos-monitor [OPTION]...\n"
        "  or:  nakos-monitor [OPTION]... FILE...\n"
        "The ORLUK Water Monitor: reads an in-line oil condition sensor on a serial\n"
        "port and charts water in oil, temperature, pressure and soot.\n"
        "\n"
        "Each FILE is read at the end of start-up, without a dialog: the first\n"
        "replaces the memory, the others are appended, as File > Open does with a\n"
        "data file; a sensor log (.log) is read as File > Import does. A file that\n"
        "cannot be read is named on standard error, and the program runs on.\n"
        "\n"
        "  --demo         run the built-in simulated sensor as \"COM 1\"\n"
        "  --port N       select \"COM N\" (N from 1 to 19) at start-up\n"
        "  --start-query  start the query at the end of start-up\n"
        "  --query-interval MS\n"
        "                 poll every MS milliseconds instead of 4000 (for tests)\n"
        "  -h, --help     show this help and exit\n"
        "  -v, --version  show the version and exit\n"
        "\n"
        "The program works in the folder it is started from: it creates data/ there,\n"
        "and data/autosave/ as the default autosave folder. Qt's own options\n"
        "(-platform, -style, -geometry, ...) are passed on to Qt.\n"
        "\n"
        "Exit status: 0 when the window closes, 2 for a bad command line.\n");
}
