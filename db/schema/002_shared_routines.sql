-- Who ran the module and what they did; the visits a desk asks about; the disease codes
-- every clinical screen picks from; the accounting periods the posting check reads.
--@db HOSPITAL

-- One row per run of the module: opened when the main window loads, closed at the end.
CREATE TABLE UserActivities (
    SNO $ID,
    Username VARCHAR(50),
    LoginDate $DATE,
    LoginTime VARCHAR(10),
    islogout $SMALLINT NOT NULL DEFAULT 0,
    AppVersion $SMALLINT,
    LogoutDate $DATE,
    LogoutTime VARCHAR(10),
    AutoLogoff $SMALLINT NOT NULL DEFAULT 0,
    Remarks VARCHAR(100)
);
CREATE INDEX ix_useractivities_username ON UserActivities (Username);

-- What SpAudiTrail records: one row per noteworthy action, the seven values in order.
CREATE TABLE AuditTrail (
    SNo $ID,
    userName VARCHAR(50),
    userAction VARCHAR(1000),
    ActionDate $DATE,
    ActionTime VARCHAR(10),
    TranCode VARCHAR(50),
    Remarks VARCHAR(1000),
    Src VARCHAR(100)
);
CREATE INDEX ix_audittrail_trancode ON AuditTrail (TranCode);
CREATE INDEX ix_audittrail_username ON AuditTrail (userName, ActionDate);

-- One row per visit (attendance).
CREATE TABLE hRecords (
    recID $ID,
    recDate $DATE,
    htime VARCHAR(10),
    PNo VARCHAR(13),
    consultID VARCHAR(20),
    empID VARCHAR(50),
    clinicType VARCHAR(100),
    Remarks VARCHAR(100),
    HmoRef VARCHAR(3),
    referal VARCHAR(3),
    DocAssigned VARCHAR(50),
    PatVal INTEGER DEFAULT 0,
    suppres $SMALLINT NOT NULL DEFAULT 0,
    attendedto $SMALLINT NOT NULL DEFAULT 0,
    attendedtoByDoc $SMALLINT NOT NULL DEFAULT 0,
    attendedToByNurse $SMALLINT NOT NULL DEFAULT 0,
    BillDate $DATE,
    clientCat VARCHAR(30),
    CoyName VARCHAR(20),
    Debt $REAL DEFAULT 0,
    LastConsultID VARCHAR(20),
    LastAttndDate $DATE,
    LastClinicVisited VARCHAR(100),
    LastPurpose VARCHAR(50)
);
CREATE INDEX ix_hrecords_consultid ON hRecords (consultID);
CREATE INDEX ix_hrecords_pno ON hRecords (PNo, recDate);
CREATE INDEX ix_hrecords_recdate ON hRecords (recDate);

-- The visits of today by the server's clock.
CREATE VIEW qryhVisitsForToday AS
SELECT COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       r.recDate AS RecDate, r.htime AS "Time", r.CoyName, r.clientCat AS ClientCat,
       r.clinicType AS ClinicType, r.recID, p.psurname AS Surname, r.PNo AS pNO, r.empID,
       r.Remarks, r.attendedto AS attendedTo, r.consultID AS ConsultID, r.referal AS Referal,
       r.HmoRef AS HMORef, c.retainID AS RetainID, p.policyType AS PolicyType,
       p.empno AS EmpNo
FROM hRecords r
LEFT JOIN hPatients p ON p.PNo = r.PNo
LEFT JOIN hRetainership c ON c.retainID = r.CoyName
WHERE r.recDate = $TODAY;

-- The coded diseases (ICD-10) the diagnosis list is read from.
CREATE TABLE hICDCodes (
    Code VARCHAR(10) NOT NULL PRIMARY KEY,
    DescICD VARCHAR(250) NOT NULL
);
CREATE INDEX ix_hicdcodes_desc ON hICDCodes (DescICD);

CREATE VIEW vwICD AS SELECT Code, DescICD FROM hICDCodes;

--@db Accounting

-- The accounting periods of each company; udf_GetFinancialPeriod names the one a date
-- falls in.
CREATE TABLE FinancialPeriods (
    SNo $ID,
    CoyID VARCHAR(20) NOT NULL,
    PeriodName VARCHAR(100) NOT NULL,
    StartDate $DATE NOT NULL,
    EndDate $DATE NOT NULL
);
CREATE INDEX ix_financialperiods_coy ON FinancialPeriods (CoyID, StartDate);
