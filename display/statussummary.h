#pragma once

#include <QLabel>

class QStatusBar;

namespace outpost
{

// The line in the status bar, in a font that fits a window of the given width in pixels.
class StatusSummary : public QLabel
{
public:
    StatusSummary(QStatusBar *bar, const QFont &windowFont, int windowWidth);

    void refresh(bool kiwiVerified, int bridgeClients, qint64 sessionDecodes);
};

} // namespace outpost
