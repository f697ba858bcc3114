#include "daemon/statustable.h"

namespace outpost
{

namespace
{
QString mhz(qint64 dialHz)
{
    return dialHz == 0 ? QStringLiteral("-")
                       : QString::number(static_cast<double>(dialHz) / 1e6, 'f', 6);
}

QStringList row(const ReceiverState &state)
{
    return {state.name,
            mhz(state.dialHz),
            QString::number(state.decodesLastPeriod),
            QString::number(state.decodesLastHour),
            QStringLiteral("%1 s").arg(static_cast<double>(state.lagMs) / 1000.0, 0, 'f', 1),
            QString::number(state.passedOver),
            receiverPhaseText(state)};
}

QStringList row(const BridgeSourceState &state)
{
    const QString none = QStringLiteral("-");
    return {state.name,
            mhz(state.dialHz),
            none,
            none,
            none,
            none,
            state.attached ? QStringLiteral("attached to the bridge")
                           : QStringLiteral("waiting for the bridge")};
}
} // namespace

QString textTable(const QVector<QStringList> &rows)
{
    QVector<int> widths;
    for (const QStringList &cells : rows) {
        widths.resize(qMax(widths.size(), cells.size()));
        for (int i = 0; i < cells.size(); ++i) {
            widths[i] = qMax(widths.at(i), cells.at(i).size());
        }
    }
    QString table;
    for (const QStringList &cells : rows) {
        for (int i = 0; i + 1 < cells.size(); ++i) {
            table += cells.at(i).leftJustified(widths.at(i) + 2);
        }
        table += cells.isEmpty() ? QString() : cells.last();
        table += QLatin1Char('\n');
    }
    return table;
}

QString statusTable(const QVector<ReceiverState> &receivers,
                    const QVector<BridgeSourceState> &bridges)
{
    QVector<QStringList> rows{{QStringLiteral("NAME"), QStringLiteral("MHZ"),
                               QStringLiteral("PERIOD"), QStringLiteral("HOUR"),
                               QStringLiteral("LAG"), QStringLiteral("PASSED OVER"),
                               QStringLiteral("STATE")}};
    for (const ReceiverState &receiver : receivers) {
        rows.append(row(receiver));
    }
    for (const BridgeSourceState &bridge : bridges) {
        rows.append(row(bridge));
    }
    return textTable(rows);
}

} // namespace outpost
