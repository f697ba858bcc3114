#pragma once

#include <QVector>
#include <QtGlobal>
#include <optional>

namespace outpost
{

// Notices that decodes come with a DT beyond 1 s, which a wrong clock or a late receiver causes.
class DtWatch
{
public:
    // Takes the DTs of a period's decodes, in seconds. Returns their median over ten minutes when
    // it is time to warn: once, until it was below a second again.
    std::optional<double> take(qint64 periodStartMs, const QVector<double> &dts);

private:
    struct Period {
        qint64 startMs;
        QVector<double> dts;
    };

    QVector<double> recent(qint64 periodStartMs);

    QVector<Period> periods;       // of the last ten minutes, oldest first
    std::optional<qint64> sinceMs; // the first period
    bool warned = false;
};

} // namespace outpost
