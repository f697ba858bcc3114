#pragma once

#include <QStringList>
#include <optional>

class QWidget;

namespace outpost
{

// Lets the operator edit the highlighted callsigns until all are valid. Nothing if cancelled.
std::optional<QStringList> editedHighlightCalls(QWidget *parent, const QStringList &calls);

} // namespace outpost
