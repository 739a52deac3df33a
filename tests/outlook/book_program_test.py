"""The program on a CardDAV book and on a local one, as its user, a phone and another program of the
desktop see it, and runs that are killed.

Runs inside tests/support/desktop_session; the server's own files are what every other client sees.
"""
import json
import os
import re
import signal
import sqlite3
import subprocess
import sys
import time
import urllib.request
from pathlib import Path

program = sys.argv[1]
files = Path(os.environ["VLOUT_DAV_FILES"])
home = Path(os.environ["HOME"])
folder = home / "component"
cards = 40


class Server:
    name = "Server"

    def texts(self):
        return [(file, file.read_text()) for file in files.glob("*.vcf")]

    def put(self, file, text):
        request = urllib.request.Request(os.environ["VLOUT_DAV_URL"] + file.name, text.encode(), method="PUT",
                                         headers={"Content-Type": "text/vcard"})
        urllib.request.urlopen(request)


class Local:
    """By way of the desktop's library, a process for each look: the service may have been killed."""
    library = """import gi, sys
for each in "EBook", "EBookContacts", "EDataServer": gi.require_version(each, "1.2")
from gi.repository import EBook, EBookContacts, EDataServer
source = EDataServer.SourceRegistry.new_sync(None).ref_source("%s")
book = EBook.BookClient.connect_sync(source, 0xFFFFFFFF, None)
"""

    def __init__(self, name, uid):
        self.name, self.uid = name, uid

    def ask(self, code, given=""):
        for _ in range(20):
            done = subprocess.run(["/usr/bin/python3", "-c", self.library % self.uid + code], input=given,
                                  text=True, capture_output=True)
            if done.returncode == 0:
                return done.stdout
            time.sleep(0.1)
        raise AssertionError(done.stderr)

    def texts(self):
        every = self.ask("""for each in book.get_contacts_sync('(contains "x-evolution-any-field" "")', None)[1]:
    print(each.to_string(EBookContacts.VCardFormat(1)))""")
        return [(None, text.lstrip() + "END:VCARD") for text in every.replace("\r", "").split("END:VCARD")[:-1]]

    def put(self, _, text):
        self.ask("""book.modify_contact_sync(EBookContacts.Contact.new_from_vcard(sys.stdin.read()),
    EBookContacts.BookOperationFlags.NONE, None)""", text)


place = Server()


def vloutsync(*arguments, status=0):
    done = subprocess.run([program, *arguments, "--folder", folder], capture_output=True, text=True)
    assert done.returncode == status, (arguments, done.returncode, done.stdout, done.stderr)
    return done.stdout + done.stderr


def run(transfer):
    command = ["run", transfer, "--contacts", f"book:{place.name}", "--on-conflict", "newer"]
    return command + (["--range", "all"] if transfer == "export" else [])


def book():
    """The cards in the book by their key."""
    result = {}
    for file, text in place.texts():
        key = int(re.search(r"^X-VLID:(\d+)", text, re.M).group(1))
        assert key not in result, f"two contacts of card {key}"
        result[key] = (file, text)
    return result


def put(file, text):
    place.put(file, text)


def titles():
    with sqlite3.connect(folder / "VelmoraDB.vdb", timeout=30) as database:
        return dict(database.execute("SELECT i_idx, JobTitle FROM tbl_namecard"))


def retitle(keys, title):
    stamp = time.strftime("%Y/%m/%d %H:%M:%S", time.localtime(time.time() + 1))
    with sqlite3.connect(folder / "VelmoraDB.vdb", timeout=30) as database:
        for key in keys:
            database.execute("UPDATE tbl_namecard SET JobTitle=?, Last_moddate=? WHERE i_idx=?",
                             (f"{title}{key}", stamp, key))


def factories():
    for process in Path("/proc").glob("[0-9]*"):
        try:
            ours = f"HOME={os.environ['HOME']}\0".encode() in (process / "environ").read_bytes()
            if ours and b"addressbook-factory" in (process / "cmdline").read_bytes():
                yield int(process.name)
        except OSError:
            pass


def kill_during(transfer, after, victim):
    worker = subprocess.Popen([program, *run(transfer), "--folder", folder], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL)
    time.sleep(after)
    for process in [worker.pid] if victim == "program" else list(factories()):
        os.kill(process, signal.SIGKILL)
    worker.wait(60)


def agree():
    """Runs until there is nothing left to do; then both sides say the same.

    A service that was started anew hears of the server's changes when it has connected again."""
    for attempt in range(20):
        try:
            return check_agreement()
        except AssertionError:
            if attempt == 19:
                raise
            time.sleep(0.25)


def check_agreement():
    for transfer in ("export", "import", "sync"):
        vloutsync(*run(transfer))
    for transfer in ("export", "import"):
        assert "추가=0/갱신=0" in vloutsync(*run(transfer))
    rows, contacts = titles(), book()
    assert rows.keys() == contacts.keys(), rows.keys() ^ contacts.keys()
    for key, title in rows.items():
        assert not title or f"TITLE:{title}" in contacts[key][1], (key, title, contacts[key][1])


def lose_server_during(transfer, sign):
    """The server goes away at the first line with that sign, and comes back after the next run."""
    worker = subprocess.Popen([program, *run(transfer), "--folder", folder], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True)
    said = ""
    for line in worker.stdout:
        if line.startswith(sign) and sign not in said:
            subprocess.run([home / "server", "stop"], check=True)
        said += line
    assert worker.wait() == 0 and said.count("연결할 수 없습니다") > cards / 2, said
    assert "연결할 수 없습니다" in vloutsync(*run(transfer), status=1)
    subprocess.run([home / "server", "start"], check=True)
    agree()
    assert len(book()) == cards


no_bus = subprocess.run([program, "books"], env={**os.environ, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/none"},
                        capture_output=True, text=True)
assert no_bus.returncode == 1 and "evolution-data-server" in no_bus.stderr, no_bus
vloutsync("sample", "--cards", str(cards))
vloutsync(*run("export"))
assert len(book()) == cards

# Taken back, nothing of it is left; and that can be taken back.
exported = book().keys()
vloutsync("undo", "--yes")
assert not book()
vloutsync("undo", "2", "--yes")
assert book().keys() == exported
agree()
vloutsync("undo", "1", "--yes")
lose_server_during("export", "추가→")
retitle(range(1, cards + 1), "끊김")
lose_server_during("export", "갱신→")

listed = subprocess.run([program, "books", "--json"], capture_output=True, text=True, check=True).stdout
assert {"uid": "test-dav", "name": "Server", "account": "CardDAV", "kind": "carddav", "writable": True,
        "contacts": cards, "default": False, "problem": None} in json.loads(listed), listed


def kept():
    ours = {file: file.read_bytes() for file in folder.glob("books/**/*") if file.is_file()}
    return ours, titles(), sorted(place.texts())


# What a phone writes comes in, although it drops what it does not know. A look at it touches nothing.
file, text = book()[1]
put(file, re.sub(r"^X-VLID.*\r?\n", "", re.sub(r"^TITLE:.*\r?\n", "", text, flags=re.M), flags=re.M)
    .replace("END:VCARD", "TITLE:전화에서\r\nEND:VCARD"))
before = kept()
assert [each["card"] for each in json.loads(vloutsync("status", "--json"))["contact_changed"]] == ["1"]
assert "추가=0/갱신=1" in vloutsync(*run("import"), "--preview")
assert kept() == before
assert "추가=0/갱신=1" in vloutsync(*run("import"))
assert titles()[1] == "전화에서"
agree()

def kill_transfers(delay):
    """Killed at any time, nothing is doubled or lost."""
    steps = [("export", "program"), ("import", "program"), ("sync", "program"),
             ("export", "service"), ("import", "service"), ("sync", "service")]
    for number, (transfer, victim) in enumerate(steps):
        retitle(range(1, cards, 2), f"행{number}-")
        before = book()
        for key in range(2, cards, 4):
            file, text = before[key]
            put(file, re.sub(r"^TITLE:.*\r?\n", "", text, flags=re.M)
                .replace("END:VCARD", f"TITLE:손{number}-{key}\r\nEND:VCARD"))
        kill_during(transfer, delay(number), victim)
        agree()
        assert titles()[2] == f"손{number}-2" and titles()[1] == f"행{number}-1"


kill_transfers(lambda number: 0.15 + 0.1 * (number % 4))

# An edit made since a run is named by undo, which then does nothing unless it is told to. It brings the
# contact back with its picture, which the service keeps in a file that goes with each save.
file, text = book()[3]
put(file, text.replace("END:VCARD", "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQ\r\nEND:VCARD"))
vloutsync(*run("import"))
time.sleep(1.1)  # rows know whole seconds
retitle([3], "먼저")
vloutsync(*run("export"))
before = {key: re.search(r"^TITLE:(.*?)\r?$", text, re.M).group(1) for key, (_, text) in book().items()
          if "TITLE:" in text}
time.sleep(1.1)
retitle([3], "다시")
vloutsync(*run("export"))
file, text = book()[3]
assert "TITLE:다시3" in text
put(file, re.sub(r"^PHOTO.*\r?\n(?: .*\r?\n)*", "", text, flags=re.M).replace("TITLE:다시3", "TITLE:그 뒤"))
said = vloutsync("undo", "--yes", status=1)
assert "연락처 고침" in said, said
assert "TITLE:그 뒤" in book()[3][1]
vloutsync("undo", "--yes", "--force")
assert f"TITLE:{before[3]}" in book()[3][1] and titles()[3] == "다시3"
assert "/9j/4AAQ" in book()[3][1], book()[3][1]
agree()
assert "TITLE:다시3" in book()[3][1]

# The same server by way of a folder that another program keeps in step with it, as the guide says.
(home / "vdirsyncer.conf").write_text(f"""[general]
status_path = "{home}/status"
[pair contacts]
a = "server"
b = "files"
collections = ["from a"]
[storage server]
type = "carddav"
url = "{os.environ['VLOUT_DAV_URL'].removesuffix('book/')}"
username = "user"
password = "any"
[storage files]
type = "filesystem"
path = "{home}/.contacts"
fileext = ".vcf"
""")


def vdirsyncer(command):
    subprocess.run(["vdirsyncer", "-c", home / "vdirsyncer.conf", command], input="y\n", text=True, check=True,
                   capture_output=True, timeout=60)


# Nobody else writes to the server: a service that was started anew may still have saves to hand on.
for process in factories():
    os.kill(process, signal.SIGKILL)
vdirsyncer("discover")
vdirsyncer("sync")
there = ["--contacts", home / ".contacts" / "book", "--yes"]
assert str(there[1]) in vloutsync("run", "sync", "--contacts", home / ".contacts", "--yes", status=1)
vloutsync("run", "sync", *there)
time.sleep(1.1)
retitle([5], "오는")
file, text = book()[6]
put(file, re.sub(r"^TITLE:.*$", "TITLE:가는6", text, flags=re.M))
vdirsyncer("sync")
said = vloutsync("run", "sync", *there)
vdirsyncer("sync")
assert titles()[6] == "가는6" and "TITLE:오는5" in book()[5][1], (said, book()[5])
assert "벨모라=0/아웃룩=0" in vloutsync("run", "sync", *there)

# The same kills on a local book.
place, folder = Local("Local", os.environ["VLOUT_LOCAL_BOOK"]), home / "local"
vloutsync("sample", "--cards", str(cards))
vloutsync(*run("export"))
agree()
kill_transfers(lambda number: 0.08 + 0.04 * (number % 4))

# A first export adds a hundred contacts at once and writes their rows behind them. Killed in between, what
# lacks only its dates is no edit.
place, folder = Local("Personal", "system-address-book"), home / "many"
vloutsync("sample", "--cards", "250")
with sqlite3.connect(folder / "VelmoraDB.vdb") as database:
    database.execute("BEGIN IMMEDIATE")  # the rows have to wait
    worker = subprocess.Popen([program, *run("export"), "--folder", folder], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL)
    while len(list(folder.glob("books/*.cards/*.vcf"))) < 100 and worker.poll() is None:
        time.sleep(0.01)
    assert "다른 실행이 이 주소록" in vloutsync(*run("import"), status=1)
    worker.kill()
    worker.wait()
assert len(book()) == 100
assert "추가=0/갱신=0" in vloutsync(*run("import"))
assert "추가=150/갱신=0" in vloutsync(*run("export"))
assert len(book()) == 250
vloutsync("undo", "1", "--yes")
assert not book()

# A book that others have emptied is not filled without being asked, and neither is another one: the
# default one may change.
vloutsync(*run("export"))
assert "다른 연락처" not in vloutsync("run", "import", "--contacts", "book:system-address-book")
place.ask("""all = book.get_contacts_uids_sync('(contains "x-evolution-any-field" "")', None)[1]
book.remove_contacts_sync(all, EBookContacts.BookOperationFlags.NONE, None)""")
assert "연락처가 250개" in vloutsync(*run("export"), status=1)
vloutsync("run", "import", "--contacts", "book:")
settings = home / "config/glib-2.0/settings/keyfile"
settings.parent.mkdir(parents=True)
settings.write_text("[org/gnome/evolution]\ndefault-address-book='test-local'\n")
os.environ["GSETTINGS_BACKEND"] = "keyfile"
assert "지난번: book: (system-address-book)" in vloutsync("run", "import", status=1)

# An account whose password the desktop has.
store = """import gi
gi.require_version("EDataServer", "1.2")
from gi.repository import EDataServer
EDataServer.SourceRegistry.new_sync(None).ref_source("test-password").store_password_sync("secret", False, None)"""
subprocess.run(["/usr/bin/python3", "-c", store], check=True)
for file in files.glob("*.vcf"):
    file.unlink()
place, folder = Server(), home / "password"
vloutsync("sample", "--cards", "3")
assert "추가=3/갱신=0" in vloutsync("run", "export", "--range", "all", "--contacts", "book:Password")
assert len(book()) == 3 and "추가=0/갱신=0" in vloutsync("run", "import")
