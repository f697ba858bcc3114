#pragma once

class QWidget;

namespace outpost
{

// Shows the Help / About dialog. Returns when it is closed.
void showHelpAbout(QWidget *parent);

} // namespace outpost
