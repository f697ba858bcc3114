#pragma once

class QWidget;

namespace outpost
{

// The help page, which is also the About box. Returns when it is closed.
void showHelpAbout(QWidget *parent);

} // namespace outpost
