#include "store/receiverinput.h"

#include "base/frequency.h"

namespace outpost
{

namespace
{

ReceiverInput refused(const QString &refusal)
{
    ReceiverInput input;
    input.refusal = refusal;
    return input;
}

} // namespace

ReceiverInput readReceiverInput(const QString &hostText, const QString &portText,
                                const QString &frequencyText)
{
    const QString host = hostText.trimmed();
    if (host.isEmpty()) {
        return refused(QStringLiteral("Receiver host is required."));
    }
    bool converted = false;
    const int port = portText.trimmed().toInt(&converted);
    if (!converted || port < 1 || port > 65535) {
        return refused(QStringLiteral("Port must be 1 through 65535."));
    }
    const std::optional<double> mhz = parseFrequency(frequencyText);
    if (!mhz) {
        return refused(QStringLiteral("Enter a valid frequency in MHz."));
    }
    return {host, port, *mhz, QString()};
}

} // namespace outpost
