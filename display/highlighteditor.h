#pragma once

#include <QStringList>
#include <optional>

class QWidget;

namespace outpost
{

// Lets the operator edit the highlighted calls, until they are valid. Nothing when they cancel.
std::optional<QStringList> editedHighlightCalls(QWidget *parent, const QStringList &calls);

} // namespace outpost
