#include "daemon/passwordfile.h"

#include "daemon/plainfile.h"

#include <QFile>
#include <QTextCodec>
#include <algorithm>

namespace outpost
{

namespace
{
constexpr int maxBytes = 1000;

PasswordOutcome refused(const QString &path, const QString &why)
{
    return {QString(), QStringLiteral("%1: %2").arg(path, why)};
}

// Without the end of the line; a byte order mark is passed over.
PasswordOutcome passwordIn(QByteArray line, const QString &path)
{
    while (line.endsWith('\n') || line.endsWith('\r')) {
        line.chop(1);
    }
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(line.constData(), line.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0) {
        return refused(path, QStringLiteral("The first line is not UTF-8."));
    }
    if (std::any_of(text.begin(), text.end(),
                    [](QChar letter) { return letter.category() == QChar::Other_Control; })) {
        return refused(path, QStringLiteral("The first line holds a control character."));
    }
    return text.isEmpty() ? refused(path, QStringLiteral("The first line is empty; it must be the "
                                                         "password."))
                          : PasswordOutcome{text, QString()};
}
} // namespace

PasswordOutcome readPassword(const QString &path)
{
    const QString notPlain = whyNotPlain(path);
    if (!notPlain.isEmpty()) {
        return refused(path, notPlain);
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return refused(path, file.errorString());
    }
    const QByteArray line = file.readLine(maxBytes + 2);
    if (file.error() != QFileDevice::NoError) {
        return refused(path, file.errorString());
    }
    return line.size() > maxBytes
               ? refused(path,
                         QStringLiteral("The first line is longer than %1 bytes.").arg(maxBytes))
               : passwordIn(line, path);
}

} // namespace outpost
