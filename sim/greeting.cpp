#include "sim/greeting.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace sim
{

namespace
{

// A label list as receivers carry it, as JSON in percent encoding of about so many kB.
QByteArray configuration(const char *name, int kilobytes)
{
    QJsonArray labels;
    const QJsonObject label{{QStringLiteral("f"), 14074.0},
                            {QStringLiteral("m"), QStringLiteral("usb")},
                            {QStringLiteral("i"), QStringLiteral("FT8 <b>20 m</b>")}};
    const int bytesEach =
        QJsonDocument(label).toJson(QJsonDocument::Compact).toPercentEncoding().size() + 3;
    for (int i = 0; i * bytesEach < kilobytes * 1000; ++i)
        labels.append(label);
    const QJsonObject root{{QString::fromLatin1(name), labels}};
    const QByteArray json = QJsonDocument(root).toJson(QJsonDocument::Compact);
    return QByteArray("MSG load_") + name + "=" + json.toPercentEncoding();
}

} // namespace

QVector<QByteArray> greetingWithoutAudio(const QByteArray &clientAddress, double rateHz,
                                         int configKb)
{
    return {
        "MSG sample_rate=" + QByteArray::number(rateHz, 'f', 6),
        "MSG client_public_ip=" + clientAddress,
        "MSG rx_chans=8",
        "MSG chan_no_pwd=0",
        "MSG chan_no_pwd_true=0",
        "MSG is_local=0,0,0",
        "MSG max_camp=4",
        "MSG badp=0",
        "MSG version_maj=1 version_min=700 debian_ver=11 model=2 freq_offset=0.000",
        configuration("cfg", configKb),
        configuration("dxcfg", configKb),
        configuration("dxcomm_cfg", configKb),
        "MSG cfg_loaded",
    };
}

QVector<QByteArray> greeting(const QByteArray &clientAddress, double rateHz, int configKb)
{
    return greetingWithoutAudio(clientAddress, rateHz, configKb) +
           QVector<QByteArray>{"MSG center_freq=15000000 bandwidth=30000000 adc_clk_nom=66666600",
                               "MSG audio_init=0 audio_rate=" +
                                   QByteArray::number(qRound(rateHz / 250) * 250)};
}

} // namespace sim
