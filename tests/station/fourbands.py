"""Four simulated receivers on four bands, and the daemon that decodes them."""

import contextlib

from outpostd import Outpostd, ReceiverTable, configuration
from station import Receiver

BANDS = {"40m": 7.074, "30m": 10.136, "20m": 14.074, "17m": 18.1}  # MHz
PERIOD_MS = 15000


class FourBands(contextlib.ExitStack):
    """The daemon of four receivers, each with its behaviour."""

    def __init__(self, home, behaviours, servers, all_txt=None):
        super().__init__()
        self.receivers = {
            band: self.enter_context(
                Receiver(home, "--endpoint", f"all={behaviours.get(band, 'stream')}", folder=band))
            for band in BANDS}
        tables = [ReceiverTable(band, self.receivers[band].port, mhz)
                  for band, mhz in BANDS.items()]
        file = home.path / "outpostd.toml"
        file.write_text(configuration(tables, servers, all_txt))
        self.daemon = self.enter_context(Outpostd(home, "--config", file, "--json"))

    def decoded_periods(self, band):
        """The starts of the periods with decodes, ms since the epoch."""
        return {decode["timestamp"] for decode in self.daemon.decodes()
                if decode["receiver"] == band}
