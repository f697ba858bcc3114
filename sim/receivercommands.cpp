#include "sim/receivercommands.h"

#include <QStringList>

namespace outpost
{

namespace sim
{

namespace
{

bool isProperValue(const QString &name, const QString &value)
{
    bool isNumber = false;
    value.toDouble(&isNumber);
    return isNumber || (name == QLatin1String("mod") && !value.isEmpty());
}

} // namespace

void ReceiverCommands::take(const QString &command)
{
    if (isKeepalive(command)) {
        m_earlyKeepalives += complete() ? 0 : 1;
        return;
    }
    if (!command.startsWith(QLatin1String("SET "))) {
        return;
    }
    m_authorised = m_authorised || command.startsWith(QLatin1String("SET auth "));
    m_audioRateOk = m_audioRateOk || command.startsWith(QLatin1String("SET AR OK in="));
    if (command.startsWith(QLatin1String("SET compression="))) {
        m_uncompressed = command.endsWith(QLatin1String("=0"));
    }
    const QStringList words = command.mid(4).split(QLatin1Char(' '));
    for (const QString &word : words) {
        const QString name = word.section(QLatin1Char('='), 0, 0);
        if (isProperValue(name, word.section(QLatin1Char('='), 1)) && m_fields.size() < 100) {
            m_fields.insert(name);
        }
    }
}

bool ReceiverCommands::complete() const
{
    static const QSet<QString> required = {QStringLiteral("mod"),      QStringLiteral("low_cut"),
                                           QStringLiteral("high_cut"), QStringLiteral("freq"),
                                           QStringLiteral("agc"),      QStringLiteral("hang"),
                                           QStringLiteral("thresh"),   QStringLiteral("slope"),
                                           QStringLiteral("decay"),    QStringLiteral("manGain")};
    return m_authorised && m_audioRateOk && m_fields.contains(required);
}

bool ReceiverCommands::isKeepalive(const QString &command)
{
    return command == QLatin1String("SET keepalive");
}

} // namespace sim

} // namespace outpost
