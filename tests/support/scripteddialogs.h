#pragma once

#include "files/filedialogs.h"
#include "files/logfolder.h"

#include <QList>
#include <QStringList>

#include <functional>

// File dialogs for tests: answers from a script ("" and 0, as after Cancel,
// when it runs out) and records every dialog it was asked to show.
class ScriptedDialogs : public FileDialogs {
public:
    struct Call {
        Kind kind;
        QString filter;
        QString initialPath;
    };

    QString fileDialog(Kind kind, const QString &filter, const QString &initialPath) override {
        calls.append({kind, filter, initialPath});
        return fileAnswers.isEmpty() ? QString() : fileAnswers.takeFirst();
    }
    QString dialog_chooseDirectory(const QString &initialPath) override {
        folderCalls << initialPath;
        return folderAnswer;
    }
    int16_t dataHandling_choose() override {
        ++modeCalls;
        if (whileChoosing)
            whileChoosing(); // what the user does elsewhere while the dialog waits
        return modeAnswers.isEmpty() ? int16_t(0) : modeAnswers.takeFirst();
    }
    QList<int> dialog_selectImportFiles(const QList<LogFileEntry> &entries) override {
        selectionCalls << entries;
        return selectionAnswer;
    }

    QStringList fileAnswers;
    QList<int16_t> modeAnswers;
    QString folderAnswer;
    QList<int> selectionAnswer;
    QList<QList<LogFileEntry>> selectionCalls;
    QList<Call> calls;
    QStringList folderCalls;
    int modeCalls = 0;
    std::function<void()> whileChoosing;
};
