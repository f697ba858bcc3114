#include "sim/greeting.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace outpost
{

namespace sim
{

namespace
{

QJsonObject jsonObject(const char *json)
{
    return QJsonDocument::fromJson(json).object();
}

// The receiver's description of itself, with the keys that clients read. The position is a string
// that clients parse.
QJsonObject aboutTheReceiver()
{
    return jsonObject(R"json({
        "rx_name": "Simulated receiver, 0-30 MHz",
        "rx_device": "KiwiSDR",
        "rx_location": "Z\u00fcrichsee, Switzerland",
        "rx_grid": "JN47gc",
        "rx_gps": "(47.100000, 8.500000)",
        "rx_asl": 410,
        "rx_antenna": "Loop",
        "owner_info": "Nobody",
        "index_html_params": {
            "PAGE_TITLE": "Simulated receiver",
            "RX_TITLE": "Simulated receiver, 0-30 MHz",
            "RX_LOC": "Z\u00fcrichsee, Switzerland",
            "RX_QRA": "JN47gc",
            "RX_ASL": "410 m",
            "RX_GMAP": "(47.100000, 8.500000)"
        },
        "init": {"freq": 14074, "mode": "usb", "zoom": 0, "max_dB": -10, "min_dB": -110},
        "passbands": {"usb": {"lo": 300, "hi": 2700}}
    })json");
}

QByteArray percentEncoded(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toPercentEncoding();
}

// The object as percent-encoded JSON, padded with labels to about `kilobytes` kB (at most one label
// more).
QByteArray configuration(const char *name, int kilobytes, QJsonObject object = {})
{
    const QJsonObject label = jsonObject(R"({"f": 14074, "m": "usb", "i": "FT8 <b>20 m</b>"})");
    const QString key = QStringLiteral("labels");
    object.insert(key, QJsonArray());
    const int bytesEach = percentEncoded(label).size() + 3; // with a comma
    const int bytesMissing = kilobytes * 1000 - percentEncoded(object).size();
    QJsonArray labels;
    for (int bytes = 0; bytes < bytesMissing; bytes += bytesEach) {
        labels.append(label);
    }
    object.insert(key, labels);
    return QByteArray("MSG load_") + name + "=" + percentEncoded(object);
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
        configuration("cfg", configKb, aboutTheReceiver()),
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

} // namespace outpost
