"""What a private display shows, read from the file in which its server keeps it."""

import struct
import zlib

SUN = 0xFFD65A  # in every picture of the collection server's
WHITE = 0xFFFFFF
LAST_FIELD = 19  # the number of colours, the last that is needed of the header


class Picture:
    """The whole display at one moment."""

    def __init__(self, file):
        with open(file, "rb") as stream:
            data = stream.read()
        header = struct.unpack(f">{LAST_FIELD + 1}I", data[:4 * (LAST_FIELD + 1)])
        self.width, self.height, stride, colors = header[4], header[5], header[12], header[LAST_FIELD]
        pixels = header[0] + 12 * colors
        self.rows = [data[pixels + y * stride:pixels + y * stride + 4 * self.width] for y in range(self.height)]

    def __eq__(self, other):
        return isinstance(other, Picture) and self.rows == other.rows

    def count(self, color):
        """How many pixels have a colour, 0xrrggbb."""
        pixel = color.to_bytes(3, "little")
        return sum(row.count(pixel) for row in self.rows)

    def png(self):
        """Down to the last line that is not bare."""
        def chunk(kind, data):
            return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
        used = max((y for y, row in enumerate(self.rows) if row != self.rows[-1]), default=0)
        rows, lines = self.rows[:used + 16], bytearray()
        for row in rows:
            line = bytearray(3 * self.width)
            line[0::3], line[1::3], line[2::3] = row[2::4], row[1::4], row[0::4]
            lines += b"\0" + line
        return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", self.width, len(rows), 8, 2, 0, 0, 0))
                + chunk(b"IDAT", zlib.compress(bytes(lines), 6)) + chunk(b"IEND", b""))
