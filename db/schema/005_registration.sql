-- What the registration desk reads while it takes a patient in: clinics and their days,
-- consulting rooms and who sits in them, the doctors of each clinic and their queues, HMO
-- plans, screening fees, staff; and the billing tables the desk only reads or appends to.
--@db HOSPITAL

CREATE TABLE clinicTypes (
    SNo $ID,
    ClinicID VARCHAR(100) NOT NULL,
    clinicName VARCHAR(100) NOT NULL,
    regfee $REAL DEFAULT 0,
    ConFee $REAL DEFAULT 0,
    Designation VARCHAR(100),
    empID VARCHAR(50),
    clinicdays VARCHAR(200)
);
CREATE UNIQUE INDEX ix_clinictypes_clinicid ON clinicTypes (ClinicID);

CREATE TABLE Weekdays (
    SNo INTEGER NOT NULL PRIMARY KEY,
    WkDay VARCHAR(10) NOT NULL
);

CREATE TABLE clinicDays (
    SNo $ID,
    ClinicDay VARCHAR(10),
    StartTime VARCHAR(10),
    ClinicID VARCHAR(100),
    NumOfPat INTEGER DEFAULT 0
);
CREATE INDEX ix_clinicdays_clinicid ON clinicDays (ClinicID);

CREATE VIEW vwClinicDays AS
SELECT d.SNo, d.ClinicID AS Clinic, d.ClinicDay, d.StartTime AS ClinicTime,
       d.NumOfPat AS PatLimit, w.SNo AS SNoID
FROM clinicDays d
LEFT JOIN Weekdays w ON upper(w.WkDay) = upper(d.ClinicDay);

CREATE TABLE hConsultingRooms (
    ConRmName VARCHAR(50) NOT NULL PRIMARY KEY,
    Location VARCHAR(20)
);

-- One row per doctor, room and day; rows of past days are purged by the queue refresh.
CREATE TABLE hConRoomAssign (
    SNO $ID,
    schdDate $DATE NOT NULL,
    ConRoomNo VARCHAR(50),
    docNo VARCHAR(50),
    isOff $SMALLINT NOT NULL DEFAULT 0
);
CREATE INDEX ix_hconroomassign_date ON hConRoomAssign (schdDate, docNo);

-- Staff of the hospital: who introduced a patient, who treated one.
CREATE TABLE employees (
    empID VARCHAR(50) NOT NULL PRIMARY KEY,
    lastname VARCHAR(100),
    firstname VARCHAR(100),
    deptID VARCHAR(50),
    designation VARCHAR(100)
);

CREATE VIEW qryemployees AS SELECT empID, lastname, firstname, deptID FROM employees;

-- Which clinics a doctor (a user of the suite) may attend to.
CREATE TABLE userRoleClinic (
    Username VARCHAR(50) NOT NULL,
    ClinicID VARCHAR(100) NOT NULL,
    PRIMARY KEY (Username, ClinicID)
);
CREATE INDEX ix_userroleclinic_clinic ON userRoleClinic (ClinicID);

CREATE VIEW qryUserRoleClinic AS
SELECT r.Username AS username, u.EmpID, u.Fullname AS Doctor, u.Fullname, r.ClinicID,
       c.clinicName AS ClinicName
FROM userRoleClinic r
JOIN ApplicationUsers u ON u.Username = r.Username
LEFT JOIN clinicTypes c ON c.ClinicID = r.ClinicID;

CREATE VIEW vwdocAssign AS
SELECT a.SNO, a.schdDate AS "Date", u.Fullname AS DocName, a.ConRoomNo AS RoomNo,
       m.Location, a.docNo AS empID
FROM hConRoomAssign a
LEFT JOIN ApplicationUsers u ON u.EmpID = a.docNo
LEFT JOIN hConsultingRooms m ON m.ConRmName = a.ConRoomNo;

-- The doctors sitting in a room on a day, with every clinic each may serve.
CREATE VIEW vwDocClinicAndPatAssignedAll AS
SELECT q.EmpID, q.Doctor, a.ConRoomNo, a.isOff AS IsOff, a.schdDate AS "Date", q.ClinicID
FROM hConRoomAssign a
JOIN qryUserRoleClinic q ON q.EmpID = a.docNo;

-- One row per doctor of a clinic and day on which the hospital did anything (a room
-- assignment or an assigned visit), also for doctors with nobody yet; the count is every
-- visit of that day sent to the doctor, whatever the clinic, so that the least-loaded
-- doctor is the one with the fewest patients overall.
CREATE VIEW vwDocMinNumOfPat AS
SELECT q.EmpID, q.Doctor, COALESCE(a.ConRoomNo, 'RM XXX') AS RoomNo,
       COALESCE(a.isOff, 0) AS IsOff, d.dt AS "Date", q.ClinicID,
       (SELECT COUNT(*) FROM hRecords r
        WHERE r.DocAssigned = q.EmpID AND r.recDate = d.dt AND r.PatVal = 1) AS NumOfPat
FROM qryUserRoleClinic q
CROSS JOIN (SELECT schdDate AS dt FROM hConRoomAssign
            UNION SELECT recDate FROM hRecords WHERE PatVal = 1) d
LEFT JOIN hConRoomAssign a ON a.docNo = q.EmpID AND a.schdDate = d.dt;

-- The patients still waiting for each doctor.
CREATE VIEW vwDocWaitingList AS
SELECT r.recDate AS "Date",
       COALESCE((SELECT a.ConRoomNo FROM hConRoomAssign a
                 WHERE a.docNo = r.DocAssigned AND a.schdDate = r.recDate LIMIT 1),
                'RM XXX') AS RoomNo,
       r.clinicType AS ClinicName, u.Fullname AS Doctor,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Patient,
       r.DocAssigned AS empID, r.clinicType AS ClinicID
FROM hRecords r
LEFT JOIN ApplicationUsers u ON u.EmpID = r.DocAssigned
LEFT JOIN hPatients p ON p.PNo = r.PNo
WHERE r.PatVal = 1 AND r.DocAssigned IS NOT NULL AND r.attendedto = 0;

-- The queue by doctor and clinic; doctors in a room with nobody waiting show 0.
CREATE VIEW vwDocWaitingListGrouped AS
SELECT w."Date", w.RoomNo, w.ClinicID, w.Doctor, w.Doctor AS DocName,
       COUNT(*) AS NumOfPat, w.empID AS EmpID
FROM vwDocWaitingList w
GROUP BY w."Date", w.RoomNo, w.ClinicID, w.Doctor, w.empID
UNION ALL
SELECT a.schdDate, a.ConRoomNo, q.ClinicID, q.Doctor, q.Doctor, 0, q.EmpID
FROM hConRoomAssign a
JOIN qryUserRoleClinic q ON q.EmpID = a.docNo
WHERE a.isOff = 0
  AND NOT EXISTS (SELECT 1 FROM hRecords r
                  WHERE r.DocAssigned = a.docNo AND r.recDate = a.schdDate
                    AND r.clinicType = q.ClinicID AND r.PatVal = 1 AND r.attendedto = 0);

-- Visits with the patient's name and the payer's.
CREATE VIEW vwhRecords AS
SELECT r.recDate, r.htime, COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '')
       AS FullName, r.clinicType AS ClinicType, r.Remarks, t.retainName AS RetainName,
       r.consultID AS ConsultID, r.PNo AS pno, r.recID
FROM hRecords r
LEFT JOIN hPatients p ON p.PNo = r.PNo
LEFT JOIN hRetainership t ON t.retainID = r.CoyName;

CREATE TABLE HmoPlan (
    SNo $ID,
    PlanID VARCHAR(20),
    planName VARCHAR(150),
    CoyCode VARCHAR(20),
    Remarks VARCHAR(250),
    "Limit" $REAL DEFAULT 0,
    LimitPeriod VARCHAR(20)
);
CREATE INDEX ix_hmoplan_coycode ON HmoPlan (CoyCode);

CREATE VIEW vwhmoPlan AS
SELECT planName AS PlanName, PlanID, CoyCode AS retainID FROM HmoPlan;

CREATE TABLE hScreeningAmount (
    coycode VARCHAR(20) NOT NULL PRIMARY KEY,
    Amount $REAL DEFAULT 0
);

-- Vital signs taken by the nurses before a consultation.
CREATE TABLE hPreConsult (
    SNo $ID,
    consultID VARCHAR(20),
    PNo VARCHAR(13),
    recDate $DATE,
    Temperature VARCHAR(20),
    BloodPressure VARCHAR(20),
    Pulse VARCHAR(20),
    Weight VARCHAR(20),
    Height VARCHAR(20),
    Remarks VARCHAR(500)
);
CREATE INDEX ix_hpreconsult_pno ON hPreConsult (PNo);

CREATE TABLE hConsulting (
    ID $ID,
    consultID VARCHAR(20),
    clientCat VARCHAR(30),
    PNo VARCHAR(13),
    CDate $DATE,
    cTime VARCHAR(10),
    Complaints TEXT,
    diagnosis TEXT,
    diffdiagnosis TEXT,
    preScription TEXT,
    investigate TEXT,
    services TEXT,
    treatedBy VARCHAR(50),
    wardID VARCHAR(20),
    referto TEXT,
    PreConsult TEXT,
    TreatType VARCHAR(20),
    ClinicRemarks TEXT,
    attendedto $SMALLINT DEFAULT 0,
    sysreview TEXT,
    phyexam TEXT,
    gensys TEXT,
    genphy TEXT,
    hpc TEXT,
    pmh TEXT,
    drugHx TEXT,
    informt TEXT,
    treatPlan TEXT,
    treatplanBeforeEdit TEXT,
    treatDone TEXT,
    extraOralExam TEXT,
    intraOralExam TEXT,
    isAlarm $SMALLINT DEFAULT 0,
    medRpt TEXT,
    EditDate $DATE,
    EditTime VARCHAR(10)
);
CREATE INDEX ix_hconsulting_pno ON hConsulting (PNo);
CREATE INDEX ix_hconsulting_consultid ON hConsulting (consultID);

CREATE TABLE hhScreeningAttnd (
    SNo $ID,
    recDate $DATE,
    consultID VARCHAR(20),
    Remarks VARCHAR(50)
);

-- Extras a desk may add to a bill.
CREATE TABLE hInstantFee (
    SNo $ID,
    ItemName VARCHAR(100) NOT NULL,
    Amount $REAL DEFAULT 0,
    itemType VARCHAR(20)
);

-- The service price list, one price per payer class.
CREATE TABLE hServicePrices (
    SNo $ID,
    service VARCHAR(100) NOT NULL,
    type VARCHAR(20) NOT NULL,
    Private $REAL DEFAULT 0,
    HMO $REAL DEFAULT 0,
    NHIS $REAL DEFAULT 0,
    MTHLY $REAL DEFAULT 0,
    "3MTHLY" $REAL DEFAULT 0,
    "6MTHLY" $REAL DEFAULT 0,
    CBN $REAL DEFAULT 0,
    NEPA $REAL DEFAULT 0
);
CREATE INDEX ix_hserviceprices_service ON hServicePrices (service, type);

CREATE VIEW qryhServices AS
SELECT service, type, Private, HMO, NHIS, MTHLY, "3MTHLY", "6MTHLY", CBN, NEPA
FROM hServicePrices;

CREATE TABLE hBilling (
    ID $ID,
    billNo VARCHAR(20),
    bDate $DATE,
    PNo VARCHAR(13),
    Amount $REAL DEFAULT 0
);

-- Open balances of each bill.
CREATE VIEW qryhBillingBalance AS
SELECT b.bDate, b.bDate AS BalanceDate, b.billNo, b.PNo AS pNo,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       (COALESCE(b.AmountBilled, 0) + COALESCE(b.DebtBF, 0))
       - (COALESCE(b.Discount, 0) + COALESCE(b.AmountPaid, 0)) AS Balance
FROM Billing b
LEFT JOIN hPatients p ON p.PNo = b.PNo
WHERE (COALESCE(b.AmountBilled, 0) + COALESCE(b.DebtBF, 0))
      - (COALESCE(b.Discount, 0) + COALESCE(b.AmountPaid, 0)) <> 0;

CREATE TABLE debitnote (
    SNo $ID,
    jobcode VARCHAR(50),
    noteDate $DATE,
    Amount $REAL DEFAULT 0
);

-- Jobs whose bill has been processed but not yet signed.
CREATE VIEW vwBillingIsDue AS
SELECT b.billNo AS jobcode, b.bDate, b.PNo, b.ClientID, b.AmountBilled
FROM Billing b
WHERE b.isprocess = 1 AND b.isSigned = 0;
