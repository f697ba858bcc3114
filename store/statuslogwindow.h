#pragma once

#include "base/livedialog.h"

class QPlainTextEdit;

namespace outpost
{

// "Status Log": shows the log's text. What the reader has selected stays selected, and what is in
// view stays there, while the text changes.
class StatusLogWindow : public LiveDialog
{
public:
    StatusLogWindow(QWidget *parent, std::function<void()> onRefreshDue);

    void refresh(const QString &text);

private:
    QPlainTextEdit *const view;
};

} // namespace outpost
