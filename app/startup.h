#pragma once

#include <memory>

class QApplication;

namespace outpost
{

// Creates the application object with high-DPI scaling and the station's font, names and icon.
// `argc` must outlive it.
std::unique_ptr<QApplication> startApplication(int &argc, char **argv);

} // namespace outpost
