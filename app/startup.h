#pragma once

#include <memory>

class QApplication;

namespace outpost
{

// The application object as the station has it: scaled for dense screens, with the station's font,
// names and icon. `argc` must live as long as it does.
std::unique_ptr<QApplication> startApplication(int &argc, char **argv);

} // namespace outpost
