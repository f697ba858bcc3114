#pragma once

#include <QLabel>

class QStatusBar;

namespace outpost
{

// The status bar's one line, in a font small enough for a window of the width given, in pixels.
class StatusSummary : public QLabel
{
public:
    StatusSummary(QStatusBar *bar, const QFont &windowFont, int windowWidth);

    void refresh(bool kiwiVerified, int bridgeClients, qint64 sessionDecodes);
};

} // namespace outpost
