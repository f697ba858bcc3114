// A Qt plug-in that ends a program's event loop with the result 7.

#include <QCoreApplication>
#include <QGenericPlugin>
#include <QTimer>

namespace outpost
{

class LoopEnder : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "loopender.json")

public:
    QObject *create(const QString & /*name*/, const QString & /*parameters*/) override
    {
        auto *timer = new QTimer;
        connect(timer, &QTimer::timeout, timer, [] { QCoreApplication::exit(7); });
        timer->start(0);
        return timer;
    }
};

} // namespace outpost

#include "loopender.moc"
