#pragma once

#include "base/livedialog.h"

class QPlainTextEdit;

namespace outpost
{

// The "Status Log" window. The selection and the scroll position follow the text when it changes.
class StatusLogWindow : public LiveDialog
{
public:
    StatusLogWindow(QWidget *parent, std::function<void()> onRefreshDue);

    void refresh(const QString &text);

private:
    QPlainTextEdit *const view;
};

} // namespace outpost
