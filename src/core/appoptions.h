#pragma once

#include <QString>
#include <QStringList>

// The command line of nakos-monitor, read before QApplication exists, so
// that --help, --version and a bad argument are answered without a display
// and without touching the settings or any folder. Qt's own options
// (-platform, -style, -geometry, ...) are passed over and left in place for
// QApplication. Options are read from left to right; --help and --version
// answer at once, the first bad argument ends the parse.
struct AppOptions {
    enum class Action {
        Run,     // start the program with the choices below
        Help,    // print appOptionsHelp() on standard output, exit status 0
        Version, // print the version on standard output, exit status 0
        Fail,    // print `error` on standard error, exit status 2
    };

    static constexpr int firstPort = 1; // "COM 1" to "COM 19", as the port list
    static constexpr int lastPort = 19;
    static constexpr int minInterval_ms = 100;
    static constexpr int maxInterval_ms = 600000;

    Action action = Action::Run;
    bool demo = false;        // --demo: the built-in simulated sensor on COM 1
    int port = 0;             // --port N: select "COM N"; 0 when not given
    bool startQuery = false;  // --start-query: start the query at the end of start-up
    int queryInterval_ms = 0; // --query-interval MS: another poll period; 0: 4000 ms
    // Data files (".log": sensor logs) to read at the end of start-up, in
    // command-line order: every argument that is not an option, and every
    // one after "--".
    QStringList files;
    // Fail: one line without the program name, and whether a pointer to
    // --help should follow it (an unknown option, not a bad value).
    QString error;
    bool usageHint = false;
};

// arguments: the command line without the program name.
AppOptions parseAppOptions(const QStringList &arguments);

// The --help text, ending in a newline.
QString appOptionsHelp();
