#pragma once

#include <QString>

#include <cstdint>
#include <optional>

// The outcome of a file routine. Failure is a value, never an exception;
// message is one line naming the file, for standard error or, when the
// operator must be told (too many records), for a message box.
struct [[nodiscard]] FileResult {
    enum class Code { Ok, OpenFailed, ReadFailed, WriteFailed, TooManyRecords };

    Code code = Code::Ok;
    QString message;
    // A reader's metadata the program shows elsewhere: the oil name the file
    // carried (already in the store), for the control panel's text box.
    std::optional<QString> oilName;

    bool failed() const { return code != Code::Ok; }

    static FileResult ok() { return {}; }
    static FileResult openFailed(const QString &fileName);
    static FileResult createFailed(const QString &fileName);
    static FileResult readFailed(const QString &fileName);
    static FileResult writeFailed(const QString &fileName);
    // The file alone holds more records than the memory can take.
    static FileResult fileTooLarge(const QString &fileName, int32_t limit);
    // A log file gives more records, after thinning, than the import's limit
    // (the room left in memory) allows.
    static FileResult importTooLarge(const QString &fileName, int32_t limit);
    // The file's records and those in memory do not fit together.
    static FileResult mergeTooLarge(const QString &fileName, int32_t records, int32_t inMemory,
                                    int32_t limit);
};
