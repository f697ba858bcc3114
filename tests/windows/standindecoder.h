#pragma once

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

namespace outpost
{

// An installed decoder whose behaviour is a list of orders (tests/windows/standinjt9.cpp):
// "jt9.exe" beside "wsjtx.exe" and "Qt5Core.dll" in `folder` below a temporary folder.
class StandInDecoder
{
public:
    explicit StandInDecoder(const QStringList &orders = {},
                            const QString &folder = QStringLiteral("WSJT-X/bin"))
        : bin(root.filePath(folder))
    {
        QDir().mkpath(bin);
        put(QStringLiteral("wsjtx.exe"), {});
        put(QStringLiteral("Qt5Core.dll"), {});
        obey(orders);
        if (!QFile::copy(QStringLiteral(STAND_IN_JT9), path())) {
            qFatal("cannot install the decoder");
        }
    }

    QString path() const { return file(QStringLiteral("jt9.exe")); }
    QString folder() const { return bin; }
    QString file(const QString &name) const { return bin + QLatin1Char('/') + name; }

    void obey(const QStringList &orders) const
    {
        put(QStringLiteral("orders.txt"), orders.join(QLatin1Char('\n')).toUtf8() + '\n');
    }

    void put(const QString &name, const QByteArray &bytes) const
    {
        QFile out(file(name));
        if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size()) {
            qFatal("cannot write beside the decoder");
        }
    }

    QByteArray left(const QString &name) const
    {
        QFile in(file(name));
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }

    // What the run for this band recorded under this name, in order.
    QStringList recorded(int lowHz, const QString &name) const
    {
        QStringList values;
        const QString text = QString::fromUtf8(left(QStringLiteral("%1.txt").arg(lowHz)));
        for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            if (line.startsWith(name + QLatin1Char(' '))) {
                values.append(line.mid(name.size() + 1));
            }
        }
        return values;
    }

private:
    QTemporaryDir root;
    const QString bin;
};

} // namespace outpost
