#pragma once

#include "daemon/schedule.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

namespace outpost
{

// What `kiwi-outpostd --config FILE` runs, as the TOML file says it. Each struct is a table of the
// file, each field a key of the same name; the values here are the defaults.

struct DecoderConfig {
    QString jt9;    // path; empty: the one that is installed
    int passes = 2; // jt9's depth, 1..3
    int atOnce = 0; // at_once: decoders at the same time, over all receivers; 0: one for each core
    int split = 1;  // runs of jt9 a period: 1, the whole band, or 4 sub-bands

    bool operator==(const DecoderConfig &other) const;
};

struct ReceiverConfig {
    QString name; // unique among receivers and bridges
    QString host;
    int port = 8073;
    Schedule schedule;    // of `mhz`, or of the table `schedule`
    QString user;         // shown to the receiver's owner; empty: the program's own
    QString passwordFile; // password_file: its first line is the password; empty: no password
    bool compression = false;
    int lowHz = 200; // low_hz, high_hz: passband and decoder range, 0..5000
    int highHz = 3000;

    bool operator==(const ReceiverConfig &other) const;
};

struct BridgeConfig {
    QString name;
    int port = 27777; // of a window's bridge on this machine
    double mhz = 0;   // 0: the frequency file says it
    // frequency_file: a text file with the frequency in MHz. Empty, too: the window's own file.
    QString frequencyFile;

    bool operator==(const BridgeConfig &other) const;
};

struct WsjtxTarget {
    QString host; // a name, an address or a multicast group
    int port = 2237;

    bool operator==(const WsjtxTarget &other) const;
};

struct WsjtxConfig {
    QVector<WsjtxTarget> targets; // "HOST:PORT", one or more
    QString interface;            // of multicast; empty: loopback
    int ttl = 1;                  // of multicast, 0..255
    // Of each sender; %1 is the source's name. Without `id`, the station's name and %1.
    QString id = QStringLiteral("PELQ Kiwi Outpost %1");

    bool operator==(const WsjtxConfig &other) const;
};

enum class AllTxtSplit { Never, Monthly };

struct AllTxtConfig {
    QString folder;                               // empty: no ALL.TXT
    QString fileName = QStringLiteral("ALL.TXT"); // another one only from the command line
    AllTxtSplit split = AllTxtSplit::Never;

    bool operator==(const AllTxtConfig &other) const;
};

struct DaemonConfig {
    QString station = QStringLiteral("PELQ Kiwi Outpost");
    DecoderConfig decoder;
    QVector<ReceiverConfig> receivers;
    QVector<BridgeConfig> bridges;
    QVector<WsjtxConfig> wsjtx;
    AllTxtConfig allTxt;

    bool hasSources() const { return !receivers.isEmpty() || !bridges.isEmpty(); }
};

struct DaemonConfigOutcome {
    DaemonConfig config;
    QString error; // empty: the configuration is good
};

// Reads a configuration in TOML. An error is one line: "FILE:LINE: KEY: what is wrong; what would
// be right". Unknown keys are errors, with the nearest known one. Paths are relative to the file's
// folder; the files that the configuration names are not looked at.
DaemonConfigOutcome readDaemonConfig(const QByteArray &toml, const QString &fileName);
DaemonConfigOutcome readDaemonConfigFile(const QString &path);

// What would run, for `--check`: a line for each receiver, bridge and output. Secrets are not in
// the configuration; of a password only that there is a file.
QString daemonConfigText(const DaemonConfig &config);

} // namespace outpost
