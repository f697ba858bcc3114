#include "app/mainwindow.h"

#include "app/dialogs.h"
#include "app/logline.h"
#include "store/atomicfile.h"
#include "store/datafile.h"
#include "store/datapaths.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QJsonDocument>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

namespace
{

constexpr int refreshIntervalMs = 5000;

// A damaged log gives way to a fresh one.
QJsonObject statusLogIn(const std::optional<QByteArray> &file)
{
    return parseJsonObject(file.value_or(QByteArray())).value_or(QJsonObject());
}

QPlainTextEdit *newLogView(QDialog *dialog)
{
    auto *view = new QPlainTextEdit(dialog);
    view->setReadOnly(true);
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    view->setAccessibleName(QStringLiteral("Receiver status log"));
    return view;
}

// A reader who has scrolled stays where they are.
void replaceText(QPlainTextEdit *view, const QString &text)
{
    const int line = view->verticalScrollBar()->value();
    const int column = view->horizontalScrollBar()->value();
    view->setPlainText(text);
    view->verticalScrollBar()->setValue(line);
    view->horizontalScrollBar()->setValue(column);
}

} // namespace

void MainWindow::startStatusSession()
{
    const QString host = profile.kiwiHost.trimmed();
    if (statusSession.statusSessionActive || host.isEmpty())
        return;
    statusSession = {true, host, profile.kiwiPort, frequencyMhz, nowMs(), 0};
    refreshStatusBar();
    refreshStatusLogView();
}

void MainWindow::addSessionDecodes(qint64 count)
{
    if (statusSession.statusSessionActive && count > 0)
        statusSession.sessionDecodes += count;
}

void MainWindow::finishStatusSession()
{
    if (!statusSession.statusSessionActive)
        return;
    const qint64 endMs = nowMs();
    QDir().mkpath(dataFolder());
    const std::optional<QByteArray> file = readFile(statusLogPath());
    const QJsonObject log = withFinishedSession(statusLogIn(file), statusSession, endMs);
    const SaveResult saved = saveAtomically(statusLogPath(), QJsonDocument(log).toJson(), {},
                                            waitToReplaceMs(file.has_value()));
    if (!saved)
        logLine(QStringLiteral("Status log save failed: %1").arg(saved.error));
    statusSession = {};
    refreshStatusBar();
    rebuildStatusHistory();
    refreshStatusLogView();
}

void MainWindow::rebuildStatusHistory()
{
    statusHistory = statusHistoryText(readFile(statusLogPath()));
}

void MainWindow::refreshStatusLogView()
{
    if (!statusLogView)
        return;
    const QString shownPath = QDir::toNativeSeparators(statusLogPath());
    replaceText(statusLogView, statusLogText(statusSession, nowMs(), shownPath, statusHistory));
}

void MainWindow::showStatusLogWindow()
{
    if (statusLogDialog) {
        statusLogDialog->show();
        statusLogDialog->raise();
        statusLogDialog->activateWindow();
        return;
    }
    buildStatusLogWindow();
    statusLogDialog->show();
}

void MainWindow::buildStatusLogWindow()
{
    rebuildStatusHistory();
    statusLogDialog = new QDialog(this);
    statusLogDialog->setAttribute(Qt::WA_DeleteOnClose);
    statusLogDialog->setWindowTitle(QStringLiteral("PELQ Kiwi Outpost Status Log"));
    statusLogDialog->resize(760, 500);
    statusLogView = newLogView(statusLogDialog);
    auto *layout = new QVBoxLayout(statusLogDialog);
    layout->addWidget(statusLogView);
    layout->addWidget(newCloseBox(statusLogDialog));
    statusLogTimer = new QTimer(statusLogDialog);
    connect(statusLogTimer, &QTimer::timeout, this, [this] { refreshStatusLogView(); });
    connect(statusLogDialog, &QObject::destroyed, this, [this] {
        statusLogDialog = nullptr;
        statusLogView = nullptr;
        statusLogTimer = nullptr;
    });
    refreshStatusLogView();
    statusLogTimer->start(refreshIntervalMs);
}
