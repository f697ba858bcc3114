#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace outpost
{

struct Jt9Places;

struct DecoderChooserCallbacks {
    std::function<void(const QString &path)> onFound;    // a decoder other than the current one
    std::function<void(const QString &path)> onSelected; // by the operator
};

// Finds the installed decoder, or lets the operator select one. Reports it through the callbacks
// and then publishes it in the environment, which the decode workers read at each run. The current
// path is the last one saved; empty if there is none.
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
