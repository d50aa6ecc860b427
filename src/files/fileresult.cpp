#include "files/fileresult.h"

namespace {

FileResult make(FileResult::Code code, QString message) {
    FileResult r;
    r.code = code;
    r.message = std::move(message);
    return r;
}

QString quoted(const QString &fileName) {
    return QLatin1Char('"') + fileName + QLatin1Char('"');
}

} // namespace

FileResult FileResult::openFailed(const QString &fileName) {
    return make(Code::OpenFailed, QStringLiteral("Cannot open %1.").arg(quoted(fileName)));
}

FileResult FileResult::createFailed(const QString &fileName) {
    return make(Code::OpenFailed, QStringLiteral("Cannot create %1.").arg(quoted(fileName)));
}

FileResult FileResult::readFailed(const QString &fileName) {
    return make(Code::ReadFailed, QStringLiteral("Reading %1 failed.").arg(quoted(fileName)));
}

FileResult FileResult::writeFailed(const QString &fileName) {
    return make(Code::WriteFailed,
                QStringLiteral("Writing %1 failed; the file is incomplete.").arg(quoted(fileName)));
}

FileResult FileResult::fileTooLarge(const QString &fileName, int32_t limit) {
    return make(Code::TooManyRecords,
                QStringLiteral("%1 holds more than %2 data points, more than the data point "
                               "memory can take. Nothing was loaded.")
                    .arg(quoted(fileName))
                    .arg(limit));
}

FileResult FileResult::importTooLarge(const QString &fileName, int32_t limit) {
    return make(Code::TooManyRecords,
                QStringLiteral("%1 gives more than %2 data points, more than the data point "
                               "memory has room for. Nothing was imported.")
                    .arg(quoted(fileName))
                    .arg(limit));
}

FileResult FileResult::mergeTooLarge(const QString &fileName, int32_t records, int32_t inMemory,
                                     int32_t limit) {
    return make(Code::TooManyRecords,
                QStringLiteral("The %1 data points of %2 and the %3 in memory exceed the limit "
                               "of %4 data points. Nothing was loaded.")
                    .arg(records)
                    .arg(quoted(fileName))
                    .arg(inMemory)
                    .arg(limit));
}
