-- The SMS queue: rows a gateway outside the program reads and sends, the categories that
-- say who receives what, the saved special messages and the credit per category.
--@db SmsCenter

CREATE TABLE MessageOut (
    SNo $ID,
    Date $DATE,
    Message TEXT,
    Phone VARCHAR(20),
    isSent $SMALLINT NOT NULL DEFAULT 0,
    SNoCat INTEGER,
    SendDate $DATE,
    SendTime VARCHAR(10),
    Remarks VARCHAR(200),
    Remarks2 VARCHAR(100),
    Catname VARCHAR(20),
    fullName VARCHAR(250),
    Code VARCHAR(50)
);
-- The gateway picks what is due; rescheduling finds a visit's pending reminder again.
CREATE INDEX ix_messageout_due ON MessageOut (isSent, SendDate);
CREATE INDEX ix_messageout_remarks2 ON MessageOut (Remarks2);
CREATE INDEX ix_messageout_date ON MessageOut (Date);

-- Details and Details2 are the fixed wording that follows the salutation.
CREATE TABLE MessageCategory (
    SNo $ID,
    CatName VARCHAR(20) NOT NULL UNIQUE,
    Details VARCHAR(500),
    Details2 VARCHAR(500)
);

-- Remarks and RemarksCount hold the statements that list and count a group of recipients
-- (FullName, FullName2, PhoneNo, SNo and TotalNum); they are set up by the administrator.
CREATE TABLE PeopleCategory (
    SNo $ID,
    CatName VARCHAR(100) NOT NULL,
    Remarks TEXT,
    RemarksCount TEXT
);

CREATE TABLE messageSpecial (
    SNo $ID,
    CatName VARCHAR(20),
    Remarks VARCHAR(100),
    sendDate $DATE,
    sendTime VARCHAR(10),
    Message TEXT
);

CREATE TABLE UsersForSMS (
    username VARCHAR(50) NOT NULL PRIMARY KEY
);

-- Credit left with the gateway, per message category.
CREATE TABLE SmsAccount (
    CatName VARCHAR(20) NOT NULL PRIMARY KEY,
    CurrBalance $REAL NOT NULL DEFAULT 0
);
CREATE VIEW vwSMS_AcctDef AS SELECT CurrBalance, CatName AS CatNAme FROM SmsAccount;

-- The title of the specialist a clinic's patients are booked with.
CREATE TABLE smsClinicDesignation (
    ClinicName VARCHAR(100) NOT NULL PRIMARY KEY,
    Designation VARCHAR(100)
);
CREATE VIEW vwClinicTypesForSMS AS SELECT ClinicName, Designation FROM smsClinicDesignation;

-- The patients' salutations and phones for each message category. They read HOSPITAL's
-- patients, and SQLite keeps a view across attached files only for the connection that
-- made it: there each SmsCenter connection makes them as it opens.
--@each-connection
CREATE VIEW vwFullnamePatAttend AS
SELECT p.PNo AS pno, m.CatName AS Category, m.SNo AS SNoCat,
       'Dear ' || COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ' '
           || COALESCE(p.pfirstName, '') AS Fullname,
       'Dear ' || COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ',' AS Fullname2,
       m.Details, m.Details2, m.CatName AS Remarks, p.pPhoneNo AS PhoneNo
FROM hPatients p CROSS JOIN MessageCategory m;

CREATE VIEW vwFullnamePatAppt AS
SELECT p.PNo AS pno, m.CatName AS Category, m.SNo AS SNoCat,
       'Dear ' || COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ' '
           || COALESCE(p.pfirstName, '') AS Fullname,
       'Dear ' || COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ',' AS Fullname2,
       m.Details, m.Details2, m.CatName AS Remarks, p.pPhoneNo AS PhoneNo
FROM hPatients p CROSS JOIN MessageCategory m;

--@db HOSPITAL

-- Patients and dependants whose birthday is today, for the greetings of the SMS center.
CREATE VIEW vwBirthday AS
SELECT COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '')
           AS Fullname,
       p.pPhoneNo AS Phone, p.Email, r.retainName AS Company, p.PNo
FROM hPatients p
LEFT JOIN hRetainership r ON r.retainID = p.CoyName
WHERE $MONTHDAY(p.DOB) = $MONTHDAY($TODAY);
