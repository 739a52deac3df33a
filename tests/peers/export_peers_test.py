#!/usr/bin/env python3
"""Reads an export with programs that are not ours: khard lists every contact with its name, number and
company, and python3-vobject parses each file and finds the card's values in it."""
import glob
import os
import sqlite3
import subprocess
import sys
import tempfile

import vobject

CARDS = 1000


def check(condition, text):
    if not condition:
        sys.exit("FAILED: " + text)


def environment(folder):
    """Nothing of whoever runs the test: a home of its own, and no display."""
    return {"PATH": "/usr/bin:/bin", "PYTHONUTF8": "1", "HOME": folder}


def rows_of(folder):
    database = sqlite3.connect(os.path.join(folder, "VelmoraDB.vdb"))
    database.row_factory = sqlite3.Row
    return {str(row["i_idx"]): row for row in database.execute("select * from tbl_namecard")}


def check_card(card, row):
    def first(name, types=()):
        for line in card.contents.get(name, []):
            second = "X-VELMORA-SLOT" in line.params  # a second number without a first
            if not second and all(t in line.params.get("TYPE", []) for t in types):
                return line.value
        return ""

    company = card.org.value[0] if hasattr(card, "org") else ""
    address = first("adr", ["WORK"])
    expected = {
        "CompanyName": company,
        "Department": card.org.value[1] if hasattr(card, "org") and len(card.org.value) > 1 else "",
        "JobTitle": first("title"),
        "cellphone": first("tel", ["CELL"]),
        "company_phone1": first("tel", ["WORK", "VOICE"]),
        "company_fax1": first("tel", ["WORK", "FAX"]),
        "home_phone": first("tel", ["HOME", "VOICE"]),
        "home_fax": first("tel", ["HOME", "FAX"]),
        "email": first("email"),
        "Webpage2": first("url", ["HOME"]),
        "company_addr": address.street if address else "",
        "Birthday": first("bday"),
        "LifePartner": first("x-evolution-spouse"),
        "Anniversary": first("x-evolution-anniversary"),
        "Memo_": first("note"),
    }
    for column, value in expected.items():
        stored = (row[column] or "").replace("\r\n", "\n")
        check(value == stored, f"card {row['i_idx']}: {column} is {value!r}, not {stored!r}")


def check_with_vobject(folder):
    rows = rows_of(folder)
    for file in glob.glob(os.path.join(folder, "contacts", "*.vcf")):
        with open(file, encoding="utf-8", newline="") as stream:
            card = vobject.readOne(stream.read())
        card.validate()
        check_card(card, rows.pop(card.x_vlid.value))
    check(not rows, f"{len(rows)} cards have no contact")


def check_with_khard(folder):
    config = os.path.join(folder, "khard.conf")
    with open(config, "w", encoding="utf-8") as stream:
        stream.write(f"[addressbooks]\n[[cards]]\npath = {folder}/contacts\n")
    listed = subprocess.run(
        ["khard", "-c", config, "list", "--parsable", "--fields", "name,phone,organisations"],
        capture_output=True, text=True, check=True, env=environment(folder)).stdout.splitlines()
    rows = rows_of(folder).values()
    check(len(listed) == len(rows), f"khard lists {len(listed)} of {len(rows)} contacts")
    text = "\n".join(listed)
    for row in rows:
        for column in ("cellphone", "CompanyName"):
            check((row[column] or "") in text, f"khard does not show {column} of {row['i_idx']}")


def main(program):
    with tempfile.TemporaryDirectory() as folder:
        for arguments in (["sample", "--cards", str(CARDS)], ["run", "export", "--range", "all"]):
            subprocess.run([program, *arguments, "--folder", folder], check=True, env=environment(folder),
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        check_with_vobject(folder)
        check_with_khard(folder)


if __name__ == "__main__":
    main(sys.argv[1])
