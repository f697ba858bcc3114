#pragma once

#include <QSet>
#include <QString>

namespace outpost
{

namespace sim
{

// The commands received from a client so far. Sound starts after authorisation, when frequency,
// mode, passband, all six AGC fields and "AR OK" have arrived.
class ReceiverCommands
{
public:
    void take(const QString &command);

    bool authorised() const { return m_authorised; }
    bool complete() const;
    bool uncompressed() const { return m_uncompressed; }
    // Only the exact text counts.
    static bool isKeepalive(const QString &command);
    // More than four keepalives before the commands were complete.
    bool tooManyEarlyKeepalives() const { return m_earlyKeepalives > 4; }

private:
    QSet<QString> m_fields; // names received with a valid value
    bool m_authorised = false;
    bool m_audioRateOk = false;
    bool m_uncompressed = false;
    int m_earlyKeepalives = 0;
};

} // namespace sim

} // namespace outpost
