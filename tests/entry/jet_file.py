"""Writes small Jet 3 and Jet 4 files for convert_jet_test.py: header, usage maps, catalog, table
definitions, rows, long values. It was written after how libmdb reads such files, and so proves what
becomes of their content, not how their makers lay them out."""
import struct

BOOL, BYTE, INT, LONG, MONEY, FLOAT, DOUBLE, DATE, BINARY, TEXT, OLE, MEMO = range(1, 13)
GUID, NUMERIC = 15, 16
FIXED = {BOOL: "", BYTE: "<B", INT: "<h", LONG: "<i", MONEY: "<q", FLOAT: "<f", DOUBLE: "<d", DATE: "<d",
         GUID: "16s", NUMERIC: "17s"}


class Flag(int):
    """What a row may have before its values."""


DELETED, POINTER = Flag(0x8000), Flag(0x4000)


def rc4(key, data):
    state, j = list(range(256)), 0
    for i in range(256):
        j = (j + state[i] + key[i % len(key)]) & 255
        state[i], state[j] = state[j], state[i]
    out, i, j = bytearray(), 0, 0
    for byte in data:
        i = (i + 1) & 255
        j = (j + state[i]) & 255
        state[i], state[j] = state[j], state[i]
        out.append(byte ^ state[(state[i] + state[j]) & 255])
    return bytes(out)


class JetFile:
    def __init__(self, version=4, code_page=949, password="", key=0, hides=True):
        self.jet4, self.code_page, self.password, self.key, self.hides = version == 4, code_page, password, key, hides
        self.size = 4096 if self.jet4 else 2048
        self.pages = [None, None, None]  # the header, the usage maps, the catalog's definition
        self.maps, self.catalog = [], []

    def page(self, content=b"", at=None):
        if at is None:
            self.pages.append(None)
            at = len(self.pages) - 1
        self.pages[at] = content.ljust(self.size, b"\0")
        return at

    def rows_page(self, owner, rows, at=None):
        """A page of rows, each its bytes and its flags."""
        head = b"\1\1\0\0" + owner + b"\0\0\0\0" * self.jet4 + struct.pack("<H", len(rows))
        end, tail = self.size, b""
        for row, flags in rows:
            end -= len(row)
            tail = row + tail
            head += struct.pack("<H", end | flags)
        assert len(head) <= end
        return self.page(head.ljust(end, b"\0") + tail, at)

    def long_value(self, data):
        room = self.size - 64
        if len(data) <= 64:
            return struct.pack("<III", len(data) | 1 << 31, 0, 0) + data
        if len(data) <= room:
            page = self.rows_page(b"LVAL", [(b"other", 0), (data, 0)])
            return struct.pack("<III", len(data) | 1 << 30, page << 8 | 1, 0)
        pointer = 0
        for start in reversed(range(0, len(data), room)):
            piece = struct.pack("<I", pointer) + data[start:start + room]
            pointer = self.rows_page(b"LVAL", [(piece, 0)]) << 8
        return struct.pack("<III", len(data), pointer, 0)

    def encode(self, kind, value):
        if kind in (TEXT, MEMO) and isinstance(value, str):
            squeeze = self.jet4 and len(value) > 2 and all(0 < ord(c) < 256 for c in value)
            wide = value.encode("utf-16-le", "surrogatepass") if self.jet4 else value.encode("cp%d" % self.code_page)
            value = b"\xff\xfe" + value.encode("latin-1") if squeeze else wide
        if kind in (MEMO, OLE):
            return self.long_value(value)
        return struct.pack(FIXED[kind], value) if FIXED.get(kind) else value

    def row(self, columns, values):
        """A row that may hold fewer columns than the table: those behind the last value are missing."""
        columns = columns[:len(values)]
        fixed, variable, offsets, mask = b"", b"", [], 0
        start = 2 if self.jet4 else 1
        for i, ((_, kind, *_), value) in enumerate(zip(columns, values)):
            mask |= (value is not None and value is not False) << i
            if kind in FIXED:
                fixed += self.encode(kind, value) if value is not None and kind != BOOL else bytes(
                    struct.calcsize(FIXED[kind]))
        for (_, kind, *_), value in zip(columns, values):
            if kind not in FIXED:
                offsets.append(start + len(fixed) + len(variable))
                variable += b"" if value is None else self.encode(kind, value)
        offsets.append(start + len(fixed) + len(variable))
        mask = mask.to_bytes((len(columns) + 7) // 8, "little")
        if self.jet4:
            ends = b"".join(struct.pack("<H", o) for o in reversed(offsets)) + struct.pack("<H", len(offsets) - 1)
            return struct.pack("<H", len(columns)) + fixed + variable + ends + mask
        ends = bytes(o & 255 for o in reversed(offsets))
        jumps = [next(i for i, o in enumerate(offsets) if o >= 256 * k) for k in range(1, (offsets[-1] >> 8) + 1)]
        fill = offsets[-1] + len(ends) + 1 + len(mask)
        while len(jumps) < (fill + len(jumps) - 1) // 256:
            jumps.append(255)
        return bytes([len(columns)]) + fixed + variable + ends + bytes(reversed(jumps)) + bytes(
            [len(offsets) - 1]) + mask

    def table(self, name, columns, rows, count=None, at=None, kind=1):
        """`columns` are (name, type[, scale]); a row is its values, with flags first where it has any."""
        definition = at or self.page()
        owner, used, on_page = struct.pack("<I", definition), [], []
        encoded = []
        for values in rows:
            flags = values[0] if isinstance(values[0], Flag) else 0
            row = self.row(columns, values[1:] if flags else values)
            if flags is POINTER:  # to where the row has moved
                page = self.rows_page(owner, [(row, DELETED)])
                used.append(page)
                row = struct.pack("<I", page << 8)
            encoded.append((row, DELETED | POINTER if flags is DELETED else flags))
        for row in encoded + [None]:
            if row is None or sum(len(r) + 2 for r, _ in on_page + [row]) > self.size - 32:
                used.append(self.rows_page(owner, on_page))
                on_page = []
            on_page.append(row)
        bits = sum(1 << page for page in used)
        self.maps.append(b"\0\0\0\0\0" + bits.to_bytes(max(64, (bits.bit_length() + 7) // 8), "little"))
        self.catalog.append((definition, name, kind, 0, None))
        if count is None:
            count = sum(flags != DELETED | POINTER for _, flags in encoded)
        self.define(definition, columns, count)

    def define(self, at, columns, count):
        entries, names, offset, variables = b"", b"", 0, 0
        for i, (name, kind, *scale) in enumerate(columns):
            width = struct.calcsize(FIXED[kind]) if kind in FIXED else {TEXT: 510, BINARY: 255}.get(kind, 0)
            scale = bytes([18, *scale]) if scale else b"\0\0"
            fixed, flags = (offset, 3) if kind in FIXED else (0, 2)
            if self.jet4:
                entries += struct.pack("<BIHHH2sHBBIHH", kind, 0, i, variables, i, scale, 0, flags, 0, 0, fixed, width)
                name = name.encode("utf-16-le")
            else:
                entries += struct.pack("<BHHHH2sHBHH", kind, i, variables, i, 0, scale, 0, flags, fixed, min(width, 255))
                name = name.encode("cp%d" % self.code_page)
            names += struct.pack("<H" if self.jet4 else "<B", len(name)) + name
            offset += width if kind in FIXED else 0
            variables += kind not in FIXED
        maps = 1 << 8 | len(self.maps) - 1
        head = struct.pack("<I", 0) + (struct.pack("<IIIIIII", 0, count, 0, 1, 0, 0, 0) if self.jet4
                                       else struct.pack("<II", count, 0))
        head += struct.pack("<BHHHIIII", 0x4E, len(columns), variables, len(columns), 0, 0, maps, maps)
        body, room = head + entries + names, self.size - 8
        pieces = [body[start:start + room] for start in range(0, len(body), room)]
        follow = 0
        for i in reversed(range(len(pieces))):
            follow = self.page(b"\2\1VC" + struct.pack("<I", follow) + pieces[i], at if i == 0 else None)

    def save(self, path):
        self.table("MSysObjects", [("Id", LONG), ("Name", TEXT), ("Type", INT), ("Flags", LONG), ("LvProp", OLE)],
                   list(self.catalog), at=2)
        self.rows_page(b"\0\0\0\0", [(m, 0) for m in self.maps], at=1)
        head = bytearray(128 if self.jet4 else 126)
        struct.pack_into("<HI", head, 0x3C - 0x18, self.code_page, self.key)
        password = self.password.encode("utf-16-le" if self.jet4 else "ascii")
        head[0x42 - 0x18:0x42 - 0x18 + len(password)] = password
        self.page(b"\0\1\0\0Standard Jet DB\0" + struct.pack("<I", self.jet4) + rc4(b"\xC7\xDA\x39\x6B", head), at=0)
        with open(path, "wb") as file:
            for number, page in enumerate(self.pages):
                hidden = self.key and self.hides and number
                file.write(rc4(struct.pack("<I", self.key ^ number), page) if hidden else page)
