#include "terminalprogress.h"

#include <algorithm>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

bool standardErrorIsTerminal() {
#ifdef Q_OS_WIN
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(fileno(stderr)) != 0;
#endif
}

} // namespace

TerminalProgress::TerminalProgress(std::FILE *out, qint64 delayMs)
    : m_out(out), m_delayMs(delayMs) {
    m_sinceStart.start();
}

TerminalProgress::~TerminalProgress() {
    wipe();
}

std::unique_ptr<TerminalProgress> TerminalProgress::onStandardError() {
    if (!standardErrorIsTerminal())
        return nullptr;
    return std::make_unique<TerminalProgress>(stderr, 500);
}

void TerminalProgress::progress_begin(const QString &caption) {
    m_caption = caption;
    m_percent = 0;
    draw();
}

void TerminalProgress::progress_setValue(int percent) {
    m_percent = percent;
    draw();
}

void TerminalProgress::progress_end() {
    wipe();
}

void TerminalProgress::draw() {
    if (m_sinceStart.elapsed() < m_delayMs)
        return;
    const QByteArray line =
        QStringLiteral("nakos-tool: %1 %2%").arg(m_caption).arg(m_percent, 3).toLocal8Bit();
    // A shorter caption than the last one must not leave its tail behind.
    std::fprintf(m_out, "\r%-*s", m_shownWidth, line.constData());
    std::fflush(m_out);
    m_shownWidth = std::max(m_shownWidth, int(line.size()));
}

void TerminalProgress::wipe() {
    if (m_shownWidth == 0)
        return;
    std::fprintf(m_out, "\r%*s\r", m_shownWidth, "");
    std::fflush(m_out);
    m_shownWidth = 0;
}
