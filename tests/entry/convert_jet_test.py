#!/usr/bin/env python3
"""Moves Jet files that jet_file.py writes into component folders: what becomes of every type of column,
what is refused, and that damage to a file leaves nothing by halves."""
import datetime
import os
import random
import sqlite3
import subprocess
import sys
import tempfile

from jet_file import *

OURS = {"i_idx": LONG, "f_idx": INT, "p_idx": BYTE, "Memo_": MEMO, "Thumbnail": OLE, "OutlookSync": BOOL,
        "Birthday": DATE, "CreationTime": DATE, "Last_moddate": DATE, "Outlook_modate": DATE}
PICTURE, LONG_MEMO = b"\xff\xd8" + random.Random(1).randbytes(30000) + b"\xff\xd9", "긴 메모 'x' 그리고 ABC\r\n" * 900


def check(condition, text):
    if not condition:
        sys.exit("FAILED: " + text)


def run(*arguments):
    result = subprocess.run([sys.argv[1], *arguments], capture_output=True, encoding="utf-8", env={"LC_MESSAGES": "ko_KR.UTF-8", "HOME": base}, timeout=300)
    check(result.returncode in (0, 1), f"{arguments}: ended with {result.returncode}")
    return result


def days(*moment):
    """As Jet keeps a time; before its first day the time counts away from zero."""
    total = (datetime.datetime(*moment) - datetime.datetime(1899, 12, 30)).total_seconds()
    day, second = divmod(total, 86400)
    return day + second / 86400 if day >= 0 else day - second / 86400


# Columns that only the source has: type, what the file holds, what is to arrive.
EXTRA = [
    ("자유 필드", (TEXT,), "한글 \"값\"", "한글 \"값\""),
    ("a byte", (BYTE,), 255, 255), ("an int", (INT,), -2, -2), ("a long", (LONG,), -2**31, -2**31),
    ("yes", (BOOL,), True, 1), ("no", (BOOL,), False, 0),
    ("money", (MONEY,), -12345600, "-1234.56"), ("cents", (MONEY,), 5, "0.0005"), ("least", (MONEY,), -2**63, "-922337203685477.5808"),
    ("single", (FLOAT,), 0.1, 0.1), ("double", (DOUBLE,), -1 / 3, -1 / 3),
    ("numeric", (NUMERIC, 3), b"\x80" + struct.pack("<IIII", 0, 1, 0, 1500), "-18446744073709553.116"),
    ("guid", (GUID,), bytes(range(16)), "{03020100-0504-0706-0809-0A0B0C0D0E0F}"),
    ("bytes", (BINARY,), b"\0'\xff", b"\0'\xff"),
    ("when", (DATE,), days(2024, 2, 29, 23, 59, 59), "2024/02/29 23:59:59"), ("day", (DATE,), days(1890, 1, 2), "1890-01-02"),
    ("early", (DATE,), days(1890, 1, 2, 6, 0, 1), "1890/01/02 06:00:01"), ("rounded", (DATE,), 1.99999999, "1900-01-01"),
    ("none", (DATE,), None, None)]


def cards(columns, version):
    """Four cards and what is to arrive of them, by column."""
    full = {name: f"값 {name}" for name, kind, *_ in columns if kind == TEXT} | {name: value for name, _, value, _ in EXTRA}
    full |= {"i_idx": 7, "f_idx": 1001, "p_idx": 0, "FullName": "홍길동", "Memo_": LONG_MEMO, "Thumbnail": PICTURE,
             "OutlookSync": True, "Birthday": days(1980, 3, 4), "CreationTime": days(2020, 1, 2, 3, 4, 5),
             "Last_moddate": days(2024, 5, 6), "Outlook_modate": days(2024, 5, 6, 7, 8, 9)}
    came = full | {name: value for name, _, _, value in EXTRA} | {
        "OutlookSync": 1, "Birthday": "1980-03-04", "CreationTime": "2020-01-02",
        "Last_moddate": "2024/05/06 00:00:00", "Outlook_modate": "2024/05/06 07:08:09"}
    lone = "\ud800a" if version == 4 else b"\xffa"  # no text of its character set
    empty = {"i_idx": 8, "p_idx": 0, "FullName": "가" + "Ab" * 60, "Memo_": "m" * 300, "Thumbnail": b"", "email": "", "JobTitle": lone}
    falses = {name: 0 for name in ("OutlookSync", "yes", "no")}
    moved, old = {"i_idx": 9, "p_idx": 0, "FullName": "이사"}, {"i_idx": 10, "p_idx": 0}
    rows = [[card.get(name) for name, *_ in columns] for card in (full, empty)]
    rows += [[POINTER] + [moved.get(name) for name, *_ in columns], [DELETED] + rows[0], [10, None, 0]]
    return rows, [came, falses | empty | {"JobTitle": "\ufffda"}, falses | moved, falses | old]


def make(path, version=4, cards_table=True, folders=((1, 0, "모두"), (1001, 1, "거래처")), **header):
    jet = JetFile(version, **header)
    columns = [(name, OURS.get(name, TEXT)) for name in names] + [(name, *kind) for name, kind, _, _ in EXTRA]
    rows, expected = cards(columns, version)
    if cards_table:
        jet.table("TBL_NameCard", [(name.upper() if name in OURS else name, *kind) for name, *kind in columns], rows)
    if folders:
        jet.table("tbl_folder", [("f_idx", LONG), ("p_idx", LONG), ("folder_name", TEXT)], folders)
    jet.save(path)
    return expected


def rows_of(folder, table, key):
    database = sqlite3.connect(os.path.join(folder, "VelmoraDB.vdb"))
    database.row_factory = sqlite3.Row
    check(database.execute("pragma integrity_check").fetchone()[0] == "ok", "the database is damaged")
    return [dict(row) for row in database.execute(f"select * from {table} order by {key}")]


def check_moves(base):
    for version, header in ((4, {"password": "비밀번호"}), (4, {"key": 0x12345678}), (3, {"password": "secret"})):
        source, folder = os.path.join(base, "source.mdb"), tempfile.mkdtemp(dir=base)
        expected = make(source, version, **header)
        before = open(source, "rb").read()
        result = run("convert-jet", source, "--folder", folder)
        check(result.returncode == 0, result.stderr)
        check(before == open(source, "rb").read(), "the source has changed")
        for said in ("명함 4장, 사진 1장\n", "폴더 2개\n", f"열 {len(EXTRA)}개:", "값 1개\n"):
            check(said in result.stdout, f"{said!r} is not said: {result.stdout}")
        check(result.stdout.endswith(f"\n{folder}\n"), result.stdout)
        for card, row in zip(expected, rows_of(folder, "tbl_namecard", "i_idx"), strict=True):
            for name, value in row.items():
                same = value == card.get(name) or (name == "single" and value == struct.unpack("f", struct.pack("f", 0.1))[0])
                check(same, f"Jet {version}, card {row['i_idx']}: {name} is {value!r:.80}, not {card.get(name)!r:.80}")
        folders = [tuple(row.values()) for row in rows_of(folder, "tbl_folder", "f_idx")]
        check(folders == [(1, 0, "모두"), (2, 1, "미정"), (1000, 1000, "휴지통"), (1001, 1, "거래처")], str(folders))
        exported = run("run", "export", "--folder", folder, "--range", "all")
        check(exported.returncode == 0 and "추가=4/갱신=0" in exported.stdout, exported.stdout + exported.stderr)
    make(source, folders=None)
    result = run("convert-jet", source, "--folder", os.path.join(base, "no folders"))
    check("tbl_folder가 없어" in result.stdout, result.stdout + result.stderr)
    folders = [tuple(row.values()) for row in rows_of(os.path.join(base, "no folders"), "tbl_folder", "f_idx")]
    check(folders == [(1, 0, "전체"), (2, 1, "미정"), (1000, 1000, "휴지통")], str(folders))


def check_refusals(base):
    source = os.path.join(base, "refused.mdb")

    def table(rows, key="i_idx", **more):
        jet = JetFile()
        jet.table("tbl_namecard", [(key, LONG), ("FullName", TEXT)], rows, **more)
        jet.save(source)

    def cut(pages):
        make(source)
        os.truncate(source, 4096 * pages)

    def point_nowhere():
        """The place of the table's list of pages, which the library follows off its page, to its end."""
        make(source)
        with open(source, "r+b") as file:
            file.seek(3 * 4096 + 55)
            file.write(b"\xff")

    for said, damage in [
            ("없습니다", lambda: None), ("폴더입니다", lambda: os.mkdir(source)),
            ("SQLite", lambda: sqlite3.connect(source).execute("create table a(b)").connection.close()),
            ("Jet(Access) 데이터베이스가 아닙니다", lambda: open(source, "w").write("no database")),
            ("손상", lambda: cut(1)), ("손상", lambda: cut(3)), ("손상", lambda: cut(9)),
            ("손상된 파일입니다", point_nowhere),
            ("암호화", lambda: make(source, key=5, hides=False)), ("tbl_namecard가 없습니다", lambda: make(source, cards_table=False)),
            ("i_idx가 없습니다", lambda: table([(1, "a")], key="id")), ("번호(i_idx)가 없는", lambda: table([(None, "a")])),
            ("i_idx=1", lambda: table([(1, "a"), (1, "b")])), ("행 3개 가운데 2개", lambda: table([(1, "a"), (2, "b")], count=3)),
            ("다른 파일에 있습니다", lambda: table([(1, "a")], kind=6))]:
        if os.path.exists(source):
            (os.rmdir if os.path.isdir(source) else os.remove)(source)
        damage()
        check_refused(base, source, said)
    make(source)
    rest = os.path.join(base, "rest")
    os.mkdir(rest)
    open(rest + "/VelmoraDB.vdb-wal", "w").close()
    check("남아 있습니다" in run("convert-jet", source, "--folder", rest).stderr and len(os.listdir(rest)) == 1, "a log is taken over")
    taken = os.path.join(base, "taken")
    run("init", "--folder", taken)
    before = open(taken + "/VelmoraDB.vdb", "rb").read()
    result = run("convert-jet", source, "--folder", taken)
    check(result.returncode == 1 and "덮어쓰지 않습니다" in result.stderr, result.stderr)
    check(before == open(taken + "/VelmoraDB.vdb", "rb").read() and sorted(os.listdir(taken)) == ["VelmoraDB.vdb", "contacts"], "the folder has changed")


def check_refused(base, source, said):
    folder = os.path.join(base, "new", "folder")
    result = run("convert-jet", source, "--folder", folder)
    check(result.returncode == 1 and said in result.stderr and source in result.stderr, f"{said!r} is not said: {result.stderr}")
    check(not os.path.exists(folder), f"{said}: something is left")


def check_damage(base):
    """Bytes that have changed anywhere: the file is read or refused, and what is refused leaves nothing."""
    whole, source, dice, outcomes = os.path.join(base, "whole.mdb"), os.path.join(base, "damaged.mdb"), random.Random(7), [0, 0]
    make(whole)
    content = open(whole, "rb").read()
    for i in range(int(os.environ.get("VLOUT_DAMAGE_ROUNDS", "60"))):
        damaged = bytearray(content)
        for _ in range(1 + i % 40):
            place = dice.randrange(len(damaged))
            if i % 2:  # where a page says what it holds
                place = place // 4096 * 4096 + dice.randrange(80)
            damaged[place] = dice.choice((0, 0xFF, dice.randrange(256)))
        with open(source, "wb") as file:
            file.write(damaged)
        folder = os.path.join(base, f"damage{i}")
        result = run("convert-jet", source, "--folder", folder)
        outcomes[result.returncode] += 1
        check(os.path.exists(folder) == (result.returncode == 0), f"round {i}: {result.stderr}")
        check(result.returncode == 0 or source in result.stderr, f"round {i}: {result.stderr}")
    print("damaged files read and refused:", outcomes)


with tempfile.TemporaryDirectory() as base:
    run("init", "--folder", os.path.join(base, "names"))
    names = [row[1] for row in sqlite3.connect(os.path.join(base, "names", "VelmoraDB.vdb")).execute("pragma table_info(tbl_namecard)")]
    check_moves(base)
    check_refusals(base)
    check_damage(base)
