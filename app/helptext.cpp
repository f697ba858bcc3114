#include "app/helptext.h"

#include "base/buildconfig.h"

namespace outpost
{

QString helpHeading()
{
    return QStringLiteral(
        "<h2>PELQ Kiwi Outpost " OUTPOST_VERSION "</h2>"
        "<p>PELQ Kiwi Outpost is a native desktop application that uses a KiwiSDR web receiver "
        "elsewhere on the network as an FT8 receive source and can deliver decodes through the "
        "local WSJT bridge.</p>");
}

QString helpText()
{
    return QStringLiteral(
        "GETTING STARTED\n"
        "\n"
        "1. Open Settings > Kiwi Receiver...\n"
        "2. Enter the Kiwi serial number, host and port, enable the proxy option when using a "
        "proxy address of the receiver network, and then select Apply or OK.\n"
        "3. Select the desired FT8 band and frequency.\n"
        "4. Under Settings > Decoder, select the decode depth. Two decode passes is "
        "recommended.\n"
        "5. If necessary, use Select Installed jt9.exe... and choose jt9.exe from an installed "
        "WSJT-X application or installed WSJT-X fork.\n"
        "6. Allow one complete 15-second FT8 period for decodes to begin appearing.\n"
        "\n"
        "DECODE DISPLAY\n"
        "\n"
        "Each decoded FT8 message is displayed with its UTC time, signal strength, timing "
        "offset, audio frequency and decoded message. The lower status line shows the Kiwi "
        "connection, bridge status and total decodes.\n"
        "\n"
        "LOCAL WSJT BRIDGE\n"
        "\n"
        "Use Settings > Bridge > Start Local WSJT Bridge to enable local decode delivery. The "
        "bridge listens on 127.0.0.1:27777. Use Bridge Status to check the listener and "
        "attached clients.\n"
        "\n"
        "IMPORTANT OPERATING NOTES\n"
        "\n"
        "- PELQ Kiwi Outpost is receive-only. It does not control a transmitter.\n"
        "- Kiwi audio capture remains continuous while FT8 decoding is running.\n"
        "- jt9.exe is an external decoder supplied by a separately installed WSJT-X "
        "application. It is not included with PELQ Kiwi Outpost.\n"
        "- Keep the computer clock synchronized for correct FT8 timing.\n"
        "\n"
        "TROUBLESHOOTING\n"
        "\n"
        "No Kiwi connection:\n"
        "Verify the serial number, host, port, proxy selection and internet connection.\n"
        "\n"
        "No FT8 decodes:\n"
        "Verify the selected band and frequency, confirm that an installed jt9.exe is selected, "
        "check for band activity and wait through a complete 15-second FT8 period.\n"
        "\n"
        "Bridge not working:\n"
        "Open Bridge Status and confirm that the listener is active on 127.0.0.1:27777.\n"
        "\n"
        "ABOUT\n"
        "\n"
        "PELQ Kiwi Outpost " OUTPOST_VERSION "\n"
        "Written in C++17 with Qt " QT_VERSION_STR ".\n"
        "No separate runtime has to be installed.\n"
        "Copyright 2026 the founders of PELQ Kiwi Outpost. All rights reserved.\n"
        "WSJT-X and KiwiSDR are the property of their respective owners.");
}

} // namespace outpost
