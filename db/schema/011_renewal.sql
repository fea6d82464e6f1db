-- Card renewal, the operation notes, the contact book, and what the list screens need to
-- show their first page at once on a large register. Written so that it can run again
-- over itself: an upgrade broken off half-way is finished by the next start.
--@db HOSPITAL

-- Operation notes, one row per operation. conID ties a note to the consultation that
-- asked for it, so the consultation editor can read it back.
CREATE TABLE IF NOT EXISTS hSurgery (
    ID $ID,
    sDate $DATE,
    PNo VARCHAR(13),
    indications TEXT,
    operation TEXT,
    consent VARCHAR(150),
    relation VARCHAR(50),
    urinalysis VARCHAR(100),
    sediments VARCHAR(100),
    sugar VARCHAR(100),
    acetone VARCHAR(100),
    aib VARCHAR(100),
    sg VARCHAR(100),
    blood VARCHAR(100),
    hb VARCHAR(100),
    pcv VARCHAR(100),
    wbc VARCHAR(100),
    wbc_p VARCHAR(100),
    wbc_L VARCHAR(100),
    wbc_m VARCHAR(100),
    wbc_e VARCHAR(100),
    wbc_esr VARCHAR(100),
    urea VARCHAR(100),
    urea_na VARCHAR(100),
    urea_cL VARCHAR(100),
    urea_PCO3 VARCHAR(100),
    occultBlood VARCHAR(100),
    chestXray VARCHAR(250),
    ecg VARCHAR(250),
    bloodGroup VARCHAR(20),
    hiv VARCHAR(100),
    surgeon VARCHAR(150),
    assistant VARCHAR(150),
    anaesthetist VARCHAR(150),
    preOPBP VARCHAR(20),
    pulse VARCHAR(20),
    postOPBP VARCHAR(20),
    hgp VARCHAR(100),
    findings TEXT,
    Procedure TEXT,
    conID INTEGER
);
CREATE INDEX IF NOT EXISTS ix_hsurgery_pno ON hSurgery (PNo);
CREATE INDEX IF NOT EXISTS ix_hsurgery_conid ON hSurgery (conID);

-- "Display Entire Records" lists the visits newest time first and the referral book reads
-- a span of days: both show their first rows from an index, not after a sort of the table.
CREATE INDEX IF NOT EXISTS ix_hrecords_htime ON hRecords (htime);
CREATE INDEX IF NOT EXISTS ix_hreferal_refdate ON hreferal (refDate);

-- Private patients (the payer the PRIVATE setting names) whose card has run out: declared
-- expired (with or without a date), or due by today's date and not yet swept. numval is
-- how many whole days the card is past its expiry date (0 when it runs out today, negative
-- for a card declared expired before its date, NULL without a date), so the renewal desk
-- sees how long a card has lapsed. Other payers' cards have no expiry and never show.
DROP VIEW IF EXISTS qryhCardExpiredForPrivate;
CREATE VIEW qryhCardExpiredForPrivate AS
SELECT $DAYS($TODAY, p.expirydate) AS numval,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS FullName,
       p.pCatID, p.PNo, p.regDate, p.expirydate AS ExpiryDate, p.fileduration,
       p.oldPno AS OldPno
FROM hPatients p
WHERE p.CoyName = (SELECT d.IDVal FROM AppDefaults d WHERE d.ID = 'PRIVATE')
  AND (p.expired = 1 OR p.expirydate <= $TODAY);

-- Who came on a day, with the numbers to reach them; Age in whole years on the day.
DROP VIEW IF EXISTS qryhPhoneBook;
CREATE VIEW qryhPhoneBook AS
SELECT COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       p.pPhoneNo AS PhoneNo, p.Email, p.DOB, $YEARS(r.recDate, p.DOB) AS Age,
       t.retainName AS Company, r.clinicType AS Clinic, r.recDate AS "date", r.PNo
FROM hRecords r
JOIN hPatients p ON p.PNo = r.PNo
LEFT JOIN hRetainership t ON t.retainID = p.CoyName;
