-- What the main window watches and prints: referrals and appointments, admissions, bills
-- and receipts, and the views its timers and list reports read over them and the visits.
-- The tables carry every column their screens will write, so later features only add rows.
--@db HOSPITAL

-- A referral to a clinic; "IN-PATIENT" stands for admission.
CREATE TABLE hreferal (
    ID $ID,
    consultID VARCHAR(20),
    ConID INTEGER,
    clientCat VARCHAR(30),
    referto VARCHAR(100),
    ApptDate $DATE,
    ApptTime VARCHAR(10),
    refReason VARCHAR(500),
    PNo VARCHAR(13),
    refDate $DATE,
    refTime VARCHAR(10),
    attendedto $SMALLINT DEFAULT 0,
    attendedToByRec $SMALLINT DEFAULT 0
);
CREATE INDEX ix_hreferal_apptdate ON hreferal (ApptDate);
CREATE INDEX ix_hreferal_consultid ON hreferal (consultID);

CREATE TABLE happointment (
    SNo $ID,
    consultID VARCHAR(20),
    ConID INTEGER,
    clientCat VARCHAR(30),
    PNo VARCHAR(13),
    clinicType VARCHAR(100),
    ApptDate $DATE,
    ApptTime VARCHAR(10),
    Remarks VARCHAR(200),
    entryDate $DATE,
    entryTime VARCHAR(10),
    attendedto $SMALLINT DEFAULT 0
);
CREATE INDEX ix_happointment_apptdate ON happointment (ApptDate);
CREATE INDEX ix_happointment_consultid ON happointment (consultID);

CREATE TABLE hAdmission (
    SNo $ID,
    AdmDate $DATE,
    aTime VARCHAR(10),
    PNo VARCHAR(13),
    wardID VARCHAR(20) DEFAULT 'XX',
    Reason VARCHAR(500),
    consultID VARCHAR(20),
    clientCat VARCHAR(30),
    isDischarged $SMALLINT DEFAULT 0,
    Diagnosis TEXT,
    conID INTEGER,
    ExtendAdmissionLimitTo $TIMESTAMP
);
CREATE INDEX ix_hadmission_pno ON hAdmission (PNo);
CREATE INDEX ix_hadmission_consultid ON hAdmission (consultID);

-- Charge lines dropped by the front desk; the billing module turns them into bills.
CREATE TABLE billAccum (
    SNo $ID,
    dtDate $DATE,
    drgName VARCHAR(200),
    Price $REAL DEFAULT 0,
    Qty $REAL DEFAULT 1,
    SubTotal $REAL DEFAULT 0,
    PNo VARCHAR(13),
    consultID VARCHAR(20),
    billType VARCHAR(30),
    ConID VARCHAR(20),
    Category VARCHAR(30),
    CoyName VARCHAR(200),
    billTo VARCHAR(30),
    attendedto $SMALLINT DEFAULT 0,
    suppres $SMALLINT DEFAULT 0,
    Capitated VARCHAR(3),
    isbilled $SMALLINT DEFAULT 0,
    revType VARCHAR(50),
    AppVersion INTEGER
);
CREATE INDEX ix_billaccum_consultid ON billAccum (consultID);
CREATE INDEX ix_billaccum_pno ON billAccum (PNo);

-- Bills and receipts belong to the billing module; this module only reads them.
CREATE TABLE Billing (
    ID $ID,
    billNo VARCHAR(20),
    bDate $DATE,
    PNo VARCHAR(13),
    ClientID VARCHAR(20),
    AmountBilled $REAL DEFAULT 0,
    DebtBF $REAL DEFAULT 0,
    Discount $REAL DEFAULT 0,
    AmountPaid $REAL DEFAULT 0,
    isprocess $SMALLINT DEFAULT 0,
    isSigned $SMALLINT DEFAULT 0,
    ApprvCode VARCHAR(50)
);
CREATE INDEX ix_billing_pno ON Billing (PNo);

CREATE TABLE hpayments (
    ID $ID,
    receiptNo VARCHAR(20),
    receiptDate $DATE,
    receiptTime VARCHAR(10),
    billNo VARCHAR(20),
    PNo VARCHAR(13),
    ClientID VARCHAR(20),
    AmountPaid $REAL DEFAULT 0,
    PayMode VARCHAR(30),
    Username VARCHAR(50)
);
CREATE INDEX ix_hpayments_receiptdate ON hpayments (receiptDate);

-- Every visit with the patient's name and payer.
CREATE VIEW qryhVisits AS
SELECT r.recDate AS Recdate, r.htime AS Time, r.consultID AS ConsultID,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       r.PNo AS pno, r.clientCat AS clientcat, r.clinicType AS clinictype,
       t.ClientType AS clientCatID2, r.recID
FROM hRecords r
LEFT JOIN hPatients p ON p.PNo = r.PNo
LEFT JOIN hRetainership t ON t.retainID = r.CoyName;

-- The attendance list as the reports print it: the payer by name, the officer who took it.
CREATE VIEW qryhVisitsForAttend AS
SELECT r.recDate AS RecDate, r.htime AS Time, p.oldPno AS OLdPNo,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS FullName,
       r.clinicType AS ClinicType, COALESCE(t.retainName, r.CoyName) AS CoyName,
       p.empno AS EmpNo, p.pPhoneNo, p.Area,
       (SELECT u.Username FROM ApplicationUsers u WHERE u.EmpID = r.empID LIMIT 1) AS Username,
       t.retainCode, r.consultID, r.PNo
FROM hRecords r
LEFT JOIN hPatients p ON p.PNo = r.PNo
LEFT JOIN hRetainership t ON t.retainID = r.CoyName;

CREATE VIEW qryhNewReg AS
SELECT p.officeAddress, p.regDate AS RegDate, p.PNo,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       p.sex AS Sex, p.CardType, p.pCatID, p.oldPno AS oldpNo, p.CoyName AS coyNAme,
       p.coyType, p.empno AS empNo, p.branch, p.status, p.policyType, p.pPhoneNo,
       t.retainName, p.clientCatID,
       CASE WHEN p.patPix IS NULL THEN 'NO' ELSE 'YES' END AS HasPix,
       p.Username AS username, t.ClientType AS clientCatID2, t.retainCode
FROM hPatients p
LEFT JOIN hRetainership t ON t.retainID = p.CoyName;

-- Patients now on admission.
CREATE VIEW qryhAdmission AS
SELECT a.PNo AS pno, COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS fullname,
       a.consultID, a.clientCat AS ClientCat, a.wardID, a.AdmDate, a.aTime, p.CoyName,
       t.retainName AS Company, a.isDischarged AS isdischarged, a.ExtendAdmissionLimitTo,
       a.Reason
FROM hAdmission a
LEFT JOIN hPatients p ON p.PNo = a.PNo
LEFT JOIN hRetainership t ON t.retainID = p.CoyName
WHERE a.isDischarged = 0;

-- Patients referred for admission whom the reception has not yet received.
CREATE VIEW vwAdmissionWaitList AS
SELECT f.refDate AS Refdate, f.refTime AS reftime,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       p.sex AS Sex,
       $YEARS(f.refDate, p.DOB) AS Age,
       t.retainName AS Coyname,
       (SELECT u.Fullname FROM hRecords r JOIN ApplicationUsers u ON u.EmpID = r.DocAssigned
        WHERE r.consultID = f.consultID LIMIT 1) AS DocName,
       CAST(NULL AS VARCHAR(20)) AS RoomNo, f.PNo, f.consultID
FROM hreferal f
LEFT JOIN hPatients p ON p.PNo = f.PNo
LEFT JOIN hRetainership t ON t.retainID = p.CoyName
WHERE upper(f.referto) = 'IN-PATIENT' AND f.attendedToByRec = 0;

CREATE VIEW qryhreferal AS
SELECT f.ID, p.psurname AS pSurname, p.pfirstName AS pFirstname,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       f.consultID, f.ApptDate AS apptDate, f.ApptTime, f.referto AS ReferTo, f.refDate,
       f.refReason, f.clientCat AS ClientCat, p.CoyName, t.retainName AS Company, f.PNo,
       f.attendedToByRec
FROM hreferal f
LEFT JOIN hPatients p ON p.PNo = f.PNo
LEFT JOIN hRetainership t ON t.retainID = p.CoyName;

-- The referral book; AttendedToByRec reads YES/NO as the book shows it.
CREATE VIEW vwHReferal AS
SELECT f.ApptDate, f.ApptTime, f.ID,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Patient,
       p.pPhoneNo AS PhoneNo,
       (SELECT u.Fullname FROM hRecords r JOIN ApplicationUsers u ON u.EmpID = r.DocAssigned
        WHERE r.consultID = f.consultID LIMIT 1) AS GivenBy,
       f.referto AS ReferTo, f.refDate AS EntryDate, f.refTime AS EntryTime,
       f.consultID AS ConsultID, f.PNo, f.ConID, f.refDate,
       CASE WHEN f.attendedto = 1 THEN 'YES' ELSE 'NO' END AS AttendedTo,
       CASE WHEN f.attendedToByRec = 1 THEN 'YES' ELSE 'NO' END AS AttendedToByRec
FROM hreferal f
LEFT JOIN hPatients p ON p.PNo = f.PNo;

CREATE VIEW qryhAppt AS
SELECT a.ApptDate, a.ApptTime,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       a.clinicType AS Clinic, p.pPhoneNo AS PhoneNo, a.consultID AS ConsultID, a.PNo,
       a.Remarks, a.attendedto AS AttendedTo
FROM happointment a
LEFT JOIN hPatients p ON p.PNo = a.PNo;

-- Money received, by receipt date.
CREATE VIEW qryhBillingIncome AS
SELECT y.receiptDate AS receiptdate, y.receiptTime, y.receiptNo, y.billNo, y.PNo,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       t.retainName AS Company, y.PayMode, y.AmountPaid, y.Username
FROM hpayments y
LEFT JOIN hPatients p ON p.PNo = y.PNo
LEFT JOIN hRetainership t ON t.retainID = y.ClientID;
