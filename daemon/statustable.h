#pragma once

#include "daemon/receiverstate.h"

#include <QStringList>
#include <QVector>

namespace outpost
{

// What a bridge does, for `--status`.
struct BridgeSourceState {
    QString name;
    bool attached = false;
    qint64 dialHz = 0; // 0: not known yet
};

// Rows as columns of text: each as wide as its widest cell, two blanks apart, LF at each end. The
// last column is not padded.
QString textTable(const QVector<QStringList> &rows);

// What `--status` prints: a line for each receiver, then for each bridge.
QString statusTable(const QVector<ReceiverState> &receivers,
                    const QVector<BridgeSourceState> &bridges);

} // namespace outpost
