#include "display/statussummary.h"

#include "display/stationtexts.h"

#include <QFontMetrics>
#include <QStatusBar>

namespace outpost
{

namespace
{

// The largest size, starting with the font's own, at which the longest usual summary fits.
QFont summaryFont(QFont font, int widthToFit)
{
    const QString longest =
        QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 999999");
    constexpr qreal smallestPoints = 6.5;
    qreal points = font.pointSizeF() > 0 ? font.pointSizeF() : 9;
    font.setWeight(QFont::Normal);
    font.setPointSizeF(points);
    while (points > smallestPoints && QFontMetrics(font).horizontalAdvance(longest) > widthToFit) {
        points = qMax(smallestPoints, points - 0.25);
        font.setPointSizeF(points);
    }
    return font;
}

void makeRoomFor(const QFont &font, QStatusBar *bar)
{
    bar->clearMessage();
    bar->setSizeGripEnabled(false);
    bar->setContentsMargins(2, 0, 2, 0);
    bar->setStyleSheet(QStringLiteral("QStatusBar::item { border: 0px; }"));
    bar->setFixedHeight(qMax(18, QFontMetrics(font).height() + 6));
}

} // namespace

StatusSummary::StatusSummary(QStatusBar *bar, const QFont &windowFont, int windowWidth)
    : QLabel(bar)
{
    setAlignment(Qt::AlignCenter);
    setContentsMargins(0, 0, 0, 0);
    setMargin(0);
    setMinimumWidth(0);
    setWordWrap(false);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setFont(summaryFont(windowFont, qMax(250, windowWidth - 10)));
    makeRoomFor(font(), bar);
    bar->addWidget(this, 1);
    bar->show();
}

void StatusSummary::refresh(bool kiwiVerified, int bridgeClients, qint64 sessionDecodes)
{
    const QString summary = statusSummaryText(kiwiVerified, bridgeClients, sessionDecodes);
    if (text() != summary) {
        setText(summary);
    }
}

} // namespace outpost
