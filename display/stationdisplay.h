#pragma once

#include "base/livedialog.h"
#include "display/bridgetexts.h"
#include "display/decoderow.h"
#include "store/statuslog.h"

#include <QVector>

class QTableWidget;

namespace outpost
{

struct StationState {
    StatusSession session;
    qint64 nowMs = 0; // UTC, ms since the epoch
    BridgeState bridge;
    QVector<DecodeCells> decodes; // as in the decode table
};

// Shows the session, the latest period and a copy of the decode rows, refreshed every five seconds.
class StationDisplay : public LiveDialog
{
public:
    StationDisplay(QWidget *parent, std::function<void()> onRefreshDue);

    void refresh(const StationState &station);

private:
    void fitToContents();

    QLabel *const label;
    QTableWidget *table = nullptr;
    bool sized = false; // whether the initial size is set
};

} // namespace outpost
