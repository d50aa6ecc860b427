#pragma once

#include <QStringList>

#include <functional>

// Sub-commands of nakos-tool register themselves with a static
// ToolCommand object in their own source file, so each command lives in a
// file of its own and main.cpp never changes when one is added.
//
// A command gets its arguments without the program and command names and
// returns the process exit status; on failure it prints one line to stderr.
struct ToolCommand {
    using Run = std::function<int(const QStringList &args)>;
    ToolCommand(const char *name, const char *usage, Run run, const char *details = nullptr);

    const char *name;
    const char *usage;
    Run run;
    // Lines printed after the usage by "nakos-tool COMMAND --help".
    const char *details;
};

// Prints "nakos-tool: <message>" as one line on standard error; returns 1,
// the status of work that failed.
int toolFail(const QString &message);

// A command line that cannot run: prints "nakos-tool: <message>" on standard
// error, followed, when command is given, by a line pointing at
// "nakos-tool <command> --help" (for a wrong option or file count, not for
// a bad value); returns 2, the status of a bad command line.
int toolUsage(const QString &message, const char *command = nullptr);
