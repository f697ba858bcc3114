#pragma once

#include <QVector>
#include <QtGlobal>

namespace outpost
{

// How many decodes the periods of the last hour had.
class DecodeCount
{
public:
    void add(qint64 periodStartMs, int decodes);
    int inLastPeriod() const { return periods.isEmpty() ? 0 : periods.last().decodes; }
    int inLastHour(qint64 utcMs) const;

private:
    struct Period {
        qint64 startMs;
        int decodes;
    };

    QVector<Period> periods; // oldest first
};

} // namespace outpost
