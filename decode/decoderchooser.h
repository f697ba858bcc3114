#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace outpost
{

struct Jt9Places;

struct DecoderChooserCallbacks {
    std::function<void(const QString &path)> onFound;    // another one than the current
    std::function<void(const QString &path)> onSelected; // by the operator
};

// Finds the installed decoder or lets the operator select one, tells which, and then publishes it
// to the decode workers, who read the environment at each run. The current path is the one last
// saved, empty when there is none.
class DecoderChooser
{
public:
    DecoderChooser(QWidget *boxParent, std::function<QString()> askCurrentPath,
                   DecoderChooserCallbacks callbacksToUse);

    void findJt9(const Jt9Places &places) const;
    void selectJt9() const;

private:
    QWidget *const parent;
    const std::function<QString()> currentPath;
    const DecoderChooserCallbacks callbacks;
};

} // namespace outpost
