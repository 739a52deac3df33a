-- The two tables of a new name-card database. Text compares without regard to ASCII case, as it
-- does in Jet. The picture stands last, so that reading a row's other columns never walks over it.
CREATE TABLE tbl_namecard (
  i_idx           INTEGER PRIMARY KEY,
  f_idx           INTEGER,
  p_idx           INTEGER DEFAULT 0,
  folder_name     TEXT COLLATE NOCASE,
  FullName        TEXT COLLATE NOCASE,
  CompanyName     TEXT COLLATE NOCASE,
  Department      TEXT COLLATE NOCASE,
  JobTitle        TEXT COLLATE NOCASE,
  home_phone      TEXT COLLATE NOCASE,
  cellphone       TEXT COLLATE NOCASE,
  company_phone1  TEXT COLLATE NOCASE,
  company_phone2  TEXT COLLATE NOCASE,
  company_fax1    TEXT COLLATE NOCASE,
  home_fax        TEXT COLLATE NOCASE,
  etc_fax         TEXT COLLATE NOCASE,
  email           TEXT COLLATE NOCASE,
  email2          TEXT COLLATE NOCASE,
  Webpage         TEXT COLLATE NOCASE,
  Webpage2        TEXT COLLATE NOCASE,
  Categories      TEXT COLLATE NOCASE,
  Memo_           TEXT COLLATE NOCASE,
  Birthday        TEXT COLLATE NOCASE,
  Anniversary     TEXT COLLATE NOCASE,
  Gender          TEXT COLLATE NOCASE,
  company_nation  TEXT COLLATE NOCASE,
  company_sido    TEXT COLLATE NOCASE,
  company_sigungu TEXT COLLATE NOCASE,
  company_addr    TEXT COLLATE NOCASE,
  company_addr2   TEXT COLLATE NOCASE,
  company_zipcode TEXT COLLATE NOCASE,
  home_nation     TEXT COLLATE NOCASE,
  home_sido       TEXT COLLATE NOCASE,
  home_sigungu    TEXT COLLATE NOCASE,
  home_addr       TEXT COLLATE NOCASE,
  home_addr2      TEXT COLLATE NOCASE,
  home_zipcode    TEXT COLLATE NOCASE,
  etc_nation      TEXT COLLATE NOCASE,
  etc_sido        TEXT COLLATE NOCASE,
  etc_sigungu     TEXT COLLATE NOCASE,
  etc_addr        TEXT COLLATE NOCASE,
  etc_addr2       TEXT COLLATE NOCASE,
  etc_zipcode     TEXT COLLATE NOCASE,
  LifePartner     TEXT COLLATE NOCASE,
  Fname           TEXT COLLATE NOCASE,
  CreationTime    TEXT COLLATE NOCASE,
  OutlookSync     INTEGER DEFAULT 0,
  Last_moddate    TEXT COLLATE NOCASE,
  Outlook_modate  TEXT COLLATE NOCASE,
  VLLastsync_date TEXT COLLATE NOCASE,
  Thumbnail       BLOB
);
CREATE INDEX idx_namecard_fullname ON tbl_namecard (FullName);
CREATE INDEX idx_namecard_folder ON tbl_namecard (f_idx);

CREATE TABLE tbl_folder (
  f_idx       INTEGER PRIMARY KEY,
  p_idx       INTEGER,
  folder_name TEXT COLLATE NOCASE
);
-- The rows that every folder tree has: the root, the unassigned group, the trash.
INSERT INTO tbl_folder (f_idx, p_idx, folder_name) VALUES (1, 0, '전체');
INSERT INTO tbl_folder (f_idx, p_idx, folder_name) VALUES (2, 1, '미정');
INSERT INTO tbl_folder (f_idx, p_idx, folder_name) VALUES (1000, 1000, '휴지통');
