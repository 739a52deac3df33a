"""Writes a scenario on standard output: 300 items of a contacts folder, among them 40 distribution lists, 6 copies
and 10 whose cards are gone; 30 refuse one call with one of 12 codes, one has a memo that no statement can hold, 24
pairs have pictures. All cards go out, then the same window syncs, and 24 conflicts are answered in turn. What must be
there afterwards comes from the model below, which shares nothing with the component."""

ROW = """i_idx f_idx p_idx folder_name FullName CompanyName Department JobTitle home_phone cellphone company_phone1
    company_phone2 company_fax1 home_fax etc_fax email email2 Webpage Webpage2 Categories Memo_ Birthday Anniversary
    Gender company_addr company_zipcode home_addr home_zipcode etc_addr etc_zipcode LifePartner Fname OutlookSync
    Last_moddate Outlook_modate VLLastsync_date Thumbnail""".split()
SAME = dict(Department="Department", JobTitle="JobTitle", home_phone="HomeTelephoneNumber",
            cellphone="MobileTelephoneNumber", company_phone1="BusinessTelephoneNumber",
            company_phone2="Business2TelephoneNumber", Categories="Categories", email="Email1Address",
            email2="Email2Address", Webpage="WebPage", Webpage2="PersonalHomePage", Memo_="Body",
            Birthday="Birthday", Anniversary="Anniversary", LifePartner="Spouse",
            company_zipcode="BusinessAddressPostalCode")
FAXES = dict(company_fax1="BusinessFaxNumber", home_fax="HomeFaxNumber", etc_fax="OtherFaxNumber")
ADDRESSES = dict(company_addr="Business", home_addr="Home", etc_addr="Other")
PARTS = [a + "Address" + p for a in ("Business", "Home", "Other")
         for p in ("Street", "City", "State", "PostalCode", "Country", "PostOfficeBox")]
CONTACT = """user:VLID LastName FirstName CompanyName Department JobTitle HomeTelephoneNumber MobileTelephoneNumber
    BusinessTelephoneNumber Business2TelephoneNumber Categories BusinessFaxNumber HomeFaxNumber OtherFaxNumber
    Email1Address Email2Address WebPage PersonalHomePage Body Birthday Anniversary Gender""".split() + PARTS + ["Spouse"]
STAMPS = ROW[-4:-1]
OLD, MIDDLE, LATE, LATER = "2025/01/01 10:00:00", "2025/02/01 10:00:00", "2025/03/01 09:00:00", "2025/04/01 09:00:00"
CONFLICTS = range(205, 227)  # and two pairs whose dates are lost on the way
PICTURES = [*range(27, 87, 3), 206, 209, 212, 215]
SIZES = [1, 8191, 8192, 8193, 16383, 16384, 16385, 20000]
TOO_LONG = "65000 letters"


def name_of(i):
    given = "가나다라마바사아자차카타파하거너"
    return "김이박최정강조윤장임"[i % 10], given[i // 16 % 16] + given[i % 16]


def card(i, state):
    last, first = name_of(i)
    row = dict(i_idx=str(i), f_idx="2", p_idx="0", folder_name="미정", FullName=last + first, CompanyName=f"(주)새{i}",
               JobTitle=f"과장 {i}", cellphone=f"010-1{i:03}-0000", email=f"new{i}@example.com", Gender="남여"[i % 2],
               company_fax1=f"02-{i}", company_addr=f"서울 강남구 {i}", company_zipcode=f"1{i:04}",
               Memo_=("" if i in CONFLICTS[1:] else "it's") + f"| {i}\r\n둘째 \"줄\"\t😀", etc_addr=f"부산 {i}", etc_zipcode=f"2{i:04}", LifePartner="",
               OutlookSync="0")
    if i % 4 == 0:
        row.update(Birthday="1980-05-06", home_zipcode=f"3{i:04}", home_addr="대전 1", Categories="거래처")
    if state != "new":
        row.update(zip(STAMPS, (LATE if state in ("row", "both") else OLD, OLD, OLD)))
    if i in PICTURES:
        n = PICTURES.index(i)
        row.update(Thumbnail=str(SIZES[n % 8]), Fname=f"Card{i}.jpg" if n % 6 else "")
    return row


def contact(i, state):
    last, first = name_of(i)
    item = {"user:VLID": str(i), "LastName": last, "FirstName": first, "CompanyName": f"(주)옛{i}",
            "Department": f"부|서 '{i}' 😀", "JobTitle": f"부장 {i}", "Gender": str(1 + i % 2), "BusinessFaxNumber": f"031-{i}",
            "MobileTelephoneNumber": f"010-2{i:03}-0000", "Email1Address": f"old{i}@example.com", "Body": f"옛|{i}'|'",
            "BusinessAddressState": "경기도", "BusinessAddressCity": "수원시", "BusinessAddressStreet": f"팔달로 {i}",
            "HomeAddressPostalCode": f"4{i:04}", "OtherAddressPostalCode": f"5{i:04}", "Anniversary": "1999-09-09",
            "BusinessAddressCountry": "대한민국", "modified": {"contact": MIDDLE, "both": LATER if i % 2 else MIDDLE}.get(state, OLD)}
    if i in PICTURES:
        item["attachments"] = [[], [(f"card{i}.JPG", 2), ("메모.txt", 1), (f"CARD{i}.jpg", 3)],
                               [(f"명함이미지{i}.jpg", 2)], [(f"Card{i}.jpg.txt", 4)]][PICTURES.index(i) % 4]
    return item


# What may fail, in the state of the pair that it fails in: the member, the calls before it, and the calls that
# the record gets through with in the export ("saved": all but its row's dates) and in the sync.
FAULTS = [("row", "JobTitle", 0, "fails", "done"), ("row", "Body", 0, "fails", "done"),
          ("row", "BusinessAddressStreet", 0, "fails", "done"), ("row", "Save", 0, "fails", "done"),
          ("row", "LastModificationTime", 0, "fails", "done"), ("row", "LastModificationTime", 1, "saved", "back"),
          ("row", "open", 0, "unread", "done"), ("row", "EntryID", 0, "unread", "done"),
          ("row", "UserProperties", 0, "done", "none"), ("row", "open", 1, "fails", "done"),
          ("contact", "Body", 0, "none", "fails"), ("contact", "Save", 0, "none", "fails"),
          ("contact", "LastModificationTime", 2, "none", "saved"), ("row", "Categories", 0, "fails", "done"),
          ("contact", "BusinessAddressCity", 0, "none", "fails")]
CODES = ["80004005", "80070005", "80004004", "8004010F", "80040119", "8007000E", "80010105", "80040107", "800706BA",
         "80040600", "80070057", "00000005"]


def write_contact(item, row, with_name, create=False):
    if with_name:
        item["LastName"], item["FirstName"] = row["FullName"][0], row["FullName"][1:]
    for column, member in SAME.items():
        item[member] = row.get(column, "")
    item["CompanyName"] = row["CompanyName"]
    item["Gender"] = {"남": "2", "여": "1"}[row["Gender"]]
    if create:
        item.update({member: row.get(column, "") for column, member in FAXES.items()})
    for column, kind in ADDRESSES.items():
        item.update({kind + "AddressState": "", kind + "AddressCity": "", kind + "AddressStreet": row.get(column, "")})
    item["OtherAddressPostalCode"] = row.get("home_zipcode", "")
    if "Thumbnail" in row:
        own = f"명함이미지{row['i_idx']}.jpg"
        name = row["Fname"] or own
        item["attachments"] = [each for each in item.get("attachments", [])
                               if each[0].lower() not in (name.lower(), own.lower())] + [(name, int(row["Thumbnail"]))]


def write_row(row, item):
    for column, member in {**SAME, **FAXES, "home_zipcode": "HomeAddressPostalCode",
                           "etc_zipcode": "OtherAddressPostalCode"}.items():
        row[column] = item.get(member, "")
    row["CompanyName"] = item["CompanyName"].replace("(주)", "㈜")
    row["Gender"] = {"2": "남", "1": "여"}[item["Gender"]]
    for column, kind in ADDRESSES.items():
        parts = [item.get(kind + "Address" + part, "") for part in ("Country", "State", "City", "Street", "PostOfficeBox")]
        if any(parts):
            row[column] = " ".join(parts).replace("대한민국", "").replace("  ", " ").strip(" ")
        else:
            row[column] = ""


class Model:
    def __init__(self):
        self.rows, self.items, self.saves, self.answers, self.actions = {}, [], 0, -1, []
        states = ["row", "contact", "same"]
        faults = {}
        for n in range(30):
            state, *fault = FAULTS[n % len(FAULTS)]
            i = next(k for k in range(20 + 6 * n, 26 + 6 * n) if states[k % 3] == state)
            faults[i] = (*fault, CODES[n % len(CODES)])
        for i in range(1, 245):
            state = "both" if i in CONFLICTS else states[i % 3]
            self.rows[i] = card(i, state)
            item = contact(i, state)
            if i in faults:
                item["outcome"] = faults[i]
            self.items.append(item)
            if i % 6 == 0 and i <= 240:
                self.items.append({"type": "DistListItem", "LastName": f"모임 {i}", "modified": OLD})
            if i % 24 == 0:
                self.items.append({**contact(9000 + i, "contact"), "LastName": "구"})
        for i in range(245, 251):
            self.rows[i] = card(i, "new")
        for i in range(251, 255):  # whose contacts were deleted
            self.rows[i] = card(i, "same")
        self.copy(4, -1, MIDDLE, "정", "다른이")    # the original has the name
        self.copy(3, 1, MIDDLE, *name_of(3))      # the original has the time
        self.copy(6, -1, MIDDLE, "정", "새사람")    # the same, and the copy comes first
        self.copy(7, -1, "2025/02/20 10:00:00", *name_of(7))  # of two of the name the first: the copy
        self.copy(10, 1, OLD, "정", "때맞음")        # the copy has the time, the edited original not
        self.copy(13, 1, "2025/02/20 10:00:00", "정", "나중")  # neither has the name: the first
        self.find(13)[0].update(LastName="정", FirstName="바뀜")
        self.find(241)[0]["Body"] = TOO_LONG
        self.find(238)[0]["Body"] = "60000 letters"

    def find(self, i):
        return [item for item in self.items if item.get("user:VLID") == str(i)]

    def copy(self, i, place, modified, last, first):
        at = self.items.index(self.find(i)[0]) + max(place, 0)
        self.items.insert(at, {**contact(i, "same"), "LastName": last, "FirstName": first, "modified": modified,
                               "Body": "사본"})

    def owner(self, row):
        carriers = self.find(row["i_idx"])
        for test in (lambda c: c["modified"] == row["Outlook_modate"],
                     lambda c: c["LastName"] + c["FirstName"] == row["FullName"], lambda c: True):
            for each in carriers:
                if test(each):
                    return each

    def save(self, item):
        self.saves += 1
        item["modified"] = f"2026 save {self.saves:04}"
        self.items.remove(item)
        self.items.append(item)

    def stamp(self, row, item):
        row.update(dict.fromkeys(STAMPS, item["modified"]))

    def export(self):
        lines, left, updated, conflicts = [], dict(self.rows), 0, 0
        for item in list(self.items):
            row = self.rows.get(int(item.get("user:VLID", 0)))
            if not row:
                continue
            name = item["LastName"] + item["FirstName"]
            if item is not self.owner(row):
                lines.append(f"VLID 중복({name}): {row['i_idx']}|0%|제외")
                continue
            member, _, fate, _, _ = item.get("outcome", ("", 0, "done", "", ""))
            failure = f"실패→({row['FullName']}): {member}: {member} was refused.|0%|실패"
            if fate == "unread":  # what it is was not seen, so its card stays in the list
                shown = failure.replace(row["FullName"], f"#{self.place[id(item)]}").replace("open:", "Item:")
                lines.append(shown)
                continue
            del left[int(row["i_idx"])]
            if fate == "fails":
                lines.append(failure.replace("open:", "GetItemFromID:"))
            elif row["Last_moddate"] > item["modified"] > row["Outlook_modate"]:
                lines.append(f"→충돌←({row['FullName']})|0%|제외")
                conflicts += 1
            elif row["Last_moddate"] > item["modified"]:
                write_contact(item, row, True)
                self.save(item)
                if fate == "saved":
                    lines.append(failure)
                else:
                    self.stamp(row, item)
                    lines.append(f"갱신→({row['FullName']})|100%|완료")
                    updated += 1
        lines = ["연락처 비교/갱신|100%|완료"] + lines + ["연락처 추가|100%|완료"]
        added = 0
        for row in sorted(left.values(), key=lambda row: row["FullName"]):  # as the list is loaded
            if "Last_moddate" in row:  # sent before, and some contact could not be read
                lines.append(f"실패→({row['FullName']}): 이 명함의 연락처를 읽지 못하여 새로 보내지 않습니다|0%|실패")
                continue
            item = {"user:VLID": row["i_idx"]}
            write_contact(item, row, True, create=True)
            self.items.append(item)
            self.save(item)
            self.stamp(row, item)
            lines.append(f"추가→({row['FullName']})|100%|완료")
            added += 1
        return lines + [f"내보내기 완료|추가={added}/갱신={updated}/충돌={conflicts}|"]

    def answer(self, row, item):
        """The next conflict's: what its user does, and which side wins."""
        self.answers += 1
        which = self.answers % 4
        self.actions.append("title 충돌 비교/편집")
        if which > 1:
            self.actions.append(f"press Command{which + 1}")
            return ["newer", "skip"][which - 2]
        self.actions += ["tick Check1 1", f"type {'Text47' if which else 'Text4'} 고친", f"press Command{which + 1}"]
        if which:
            item["JobTitle"] = "고친"
            return "contact"
        if "'" in row["Memo_"]:  # which stands in the statement as it is
            self.actions.append("message 벨모라 저장실패!")
            return "none"
        row.update(JobTitle="고친", CompanyName=row["CompanyName"].replace("(주)", "㈜"))
        return "row"

    def sync(self):
        lines, to_rows, to_contacts = [], 0, 0
        for item in list(self.items):
            row = self.rows.get(int(item.get("user:VLID", 0)))
            if not row or item is not self.owner(row) or row["Last_moddate"] == item["modified"]:
                continue
            member, _, _, fate, _ = item.get("outcome", ("", 0, "", "done", ""))
            if fate in ("fails", "saved"):
                if fate == "saved":
                    self.save(item)
                lines.append(f"실패→({row['FullName']}): {member}: {member} was refused.|0%|실패")
                continue
            name = item["LastName"] + item["FirstName"]
            winner = "newer"
            if row["Last_moddate"] > row["Outlook_modate"] and item["modified"] > row["VLLastsync_date"]:
                winner = self.answer(row, item)
            if winner == "skip":
                lines.append(f"→충돌←({name})|0%|제외")
            if item["Body"] == TOO_LONG:  # its row is refused before the contact is saved
                self.actions.append("message Update 저장실패!\\n메모가 너무 길어")
            if item["Body"] == TOO_LONG or winner in ("skip", "none"):
                continue
            if winner == "newer":
                winner = "row" if row["Last_moddate"] > item["modified"] else "contact"
            if winner == "row":
                write_contact(item, row, False)
                self.save(item)
                lines.append(f"아웃룩→{name}|100%|완료")
                to_contacts += 1
            else:
                self.save(item)
                write_row(row, item)
                lines.append(f"벨모라→{name}|100%|완료")
                to_rows += 1
            self.stamp(row, item)
        return ["연락처 비교/갱신|100%|완료"] + lines + [f"갱신완료|벨모라={to_rows}/아웃룩={to_contacts}|"]

    def after(self):
        lines = []
        for row in self.rows.values():
            shown = dict(row)
            time = self.find(row["i_idx"])[-1]["modified"] if self.find(row["i_idx"]) else ""
            for stamp in STAMPS:
                value = row.get(stamp, "")
                shown[stamp] = "=contact" if value == time and value else "now" if value > "2026" else value
            if "Thumbnail" in row:
                shown["Thumbnail"] += " bytes"
            lines.append("row " + record(shown, ROW))
        contacts = []
        for item in self.items:
            if "type" not in item:
                modified = "saved" if item["modified"] > "2026" else item["modified"]
                attachments = "".join(f"\tattachment={name}:{size}" for name, size in item.get("attachments", []))
                contacts.append("contact " + record({**item, "Body": item["Body"].replace("\r\n", "\n")}, CONTACT)
                                + f"{attachments}\tmodified={modified}")
        return lines + sorted(contacts, key=lambda line: line.encode())


def record(values, keys):
    escape = str.maketrans({"\\": "\\\\", "\t": "\\t", "\n": "\\n", "\r": "\\r"})
    return "\t".join(f"{key}={values[key].translate(escape)}" for key in keys if values.get(key))


def main():
    model = Model()
    model.place = {id(item): n + 1 for n, item in enumerate(model.items)}
    assert len(model.items) == 300 and sum("outcome" in item for item in model.items) == 30
    print("# Generated.\n[only under Wine]\n[cards]")
    for row in model.rows.values():
        print(record(row, [key for key in ROW if key != "p_idx"]))
    print("[contacts]\ntype=Application\tlike=old")
    for item in model.items:
        shown = dict(item)
        if "outcome" in item:
            member, after, _, _, code = item["outcome"]
            shown["fault"] = f"{member}:{code}:1:{after}"
        attachments = "".join(f"\tattachment={name}|{'4A' * size}" for name, size in item.get("attachments", []))
        print(record(shown, ["type", *CONTACT, "fault", "modified"]) + attachments)
    print("[jet.txt]\nsizes dates zeros")
    export, sync = model.export(), model.sync()
    begin = ["아웃룩 연결|100%|성공", "데이터 구성|100%|완료"]
    print("[actions]\nchoose Combo1 1\nchoose Combo2 2\ntick Export_Check3 0\npress Command2\nmessage 내보내기를 완료하였습니다.\nlines export")
    print("choose Combo1 2\npress Command2", *model.actions, "message 상호갱신 작업이 완료되었습니다.",
          "title 벨모라 - 아웃룩 연락처 교환\nlines sync\nclose", sep="\n")
    print("[export]", *begin, *export, "[sync]", *begin, *sync, "[after]", *model.after(), sep="\n")


main()
