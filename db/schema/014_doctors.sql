-- Doctors, rooms, queues and the consultation: the least-loaded doctor reads only the day
-- asked, the doctor's list of waiting visits, the day's consultations, the clinics with
-- their consultants, the attendance items.
--@db HOSPITAL
-- Every statement may run again over itself: a step recorded as missing after a failure
-- half-way runs whole once more.

-- The preselection asks for one clinic on one date. The dates come from a DISTINCT over a
-- UNION ALL, which both databases let a "Date" = ? reach into (SQLite does not push it into
-- a plain UNION), so only that day's room rows and visits are read; each doctor's count is
-- one probe of the (DocAssigned, recDate) index below. Doctors of the clinic with nobody
-- yet still get their row, with 0.
DROP VIEW IF EXISTS vwDocMinNumOfPat;
CREATE VIEW vwDocMinNumOfPat AS
SELECT q.EmpID, q.Doctor, COALESCE(a.ConRoomNo, 'RM XXX') AS RoomNo,
       COALESCE(a.isOff, 0) AS IsOff, d.dt AS "Date", q.ClinicID,
       (SELECT COUNT(*) FROM hRecords r
        WHERE r.DocAssigned = q.EmpID AND r.recDate = d.dt AND r.PatVal = 1) AS NumOfPat
FROM (SELECT DISTINCT dt FROM (SELECT schdDate AS dt FROM hConRoomAssign
                               UNION ALL SELECT recDate FROM hRecords WHERE PatVal = 1) x) d
CROSS JOIN qryUserRoleClinic q
LEFT JOIN hConRoomAssign a ON a.docNo = q.EmpID AND a.schdDate = d.dt;

-- The queue by doctor and clinic, as the desks' grids show it every minute. The day's
-- waiting visits are counted first and the room and clinic looked up once per doctor and
-- clinic, not once per patient; doctors in a room with nobody waiting show 0.
DROP VIEW IF EXISTS vwDocWaitingListGrouped;
CREATE VIEW vwDocWaitingListGrouped AS
SELECT g."Date",
       COALESCE((SELECT a.ConRoomNo FROM hConRoomAssign a
                 WHERE a.docNo = g.empID AND a.schdDate = g."Date" LIMIT 1), 'RM XXX') AS RoomNo,
       g.ClinicID, u.Fullname AS Doctor, u.Fullname AS DocName, g.NumOfPat, g.empID AS EmpID
FROM (SELECT r.recDate AS "Date", r.DocAssigned AS empID,
             COALESCE(c.ClinicID, r.clinicType) AS ClinicID, COUNT(*) AS NumOfPat
      FROM hRecords r
      LEFT JOIN clinicTypes c ON c.clinicName = r.clinicType
      WHERE r.PatVal = 1 AND r.DocAssigned IS NOT NULL AND r.attendedto = 0
      GROUP BY r.recDate, r.DocAssigned, COALESCE(c.ClinicID, r.clinicType)) g
LEFT JOIN ApplicationUsers u ON u.EmpID = g.empID
UNION ALL
SELECT a.schdDate, a.ConRoomNo, q.ClinicID, q.Doctor, q.Doctor, 0, q.EmpID
FROM hConRoomAssign a
JOIN qryUserRoleClinic q ON q.EmpID = a.docNo
WHERE a.isOff = 0
  AND NOT EXISTS (SELECT 1 FROM hRecords r LEFT JOIN clinicTypes c ON c.clinicName = r.clinicType
                  WHERE r.DocAssigned = a.docNo AND r.recDate = a.schdDate AND r.PatVal = 1
                    AND r.attendedto = 0 AND COALESCE(c.ClinicID, r.clinicType) = q.ClinicID);
-- A clinic is looked up by its name (visits keep the name) and picked by it: two clinics of
-- one name would be edited and deleted together.
CREATE UNIQUE INDEX IF NOT EXISTS ix_clinictypes_name ON clinicTypes (clinicName);

CREATE INDEX IF NOT EXISTS ix_hrecords_doc_date ON hRecords (DocAssigned, recDate)
    WHERE PatVal = 1;
-- PatVal in the key as well, or SQLite reads every visit of the day from the table to
-- test it; with it, the day's dates come from the index alone.
CREATE INDEX IF NOT EXISTS ix_hrecords_assigned_date ON hRecords (recDate, PatVal)
    WHERE PatVal = 1;

-- Visits nobody has consulted stay at attendedto = 0 for good, so the doctor's list is
-- today's by the server's clock: a visit is seen on the day it is taken, and a list over
-- every day would fill with years of patients who went home.
CREATE INDEX IF NOT EXISTS ix_hrecords_waiting ON hRecords (recDate) WHERE attendedto = 0;
DROP VIEW IF EXISTS qryhPatListForDoc;
CREATE VIEW qryhPatListForDoc AS
SELECT r.recDate AS recdate, p.psurname AS pSurname, p.pfirstName AS pfirstname,
       r.PNo AS pno, r.consultID
FROM hRecords r
LEFT JOIN hPatients p ON p.PNo = r.PNo
WHERE r.attendedto = 0 AND r.recDate = $TODAY;

CREATE INDEX IF NOT EXISTS ix_hconsulting_cdate ON hConsulting (CDate);
DROP VIEW IF EXISTS qryhConsulting;
CREATE VIEW qryhConsulting AS
SELECT c.ID, COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       c.CDate AS cdate, c.cTime AS ctime, c.Complaints, c.diagnosis AS Diagnosis,
       c.preScription AS Prescription, c.consultID, c.treatedBy
FROM hConsulting c
LEFT JOIN hPatients p ON p.PNo = c.PNo;

-- The clinics with the name of the consultant in charge.
DROP VIEW IF EXISTS vwClinicTypes;
CREATE VIEW vwClinicTypes AS
SELECT c.ClinicID, c.clinicName AS ClinicName, c.Designation, c.empID AS EmpID,
       c.regfee AS RegFee, c.ConFee,
       (SELECT u.Fullname FROM ApplicationUsers u WHERE u.EmpID = c.empID
        ORDER BY u.Username LIMIT 1) AS Consultant
FROM clinicTypes c;

-- The accounts of the doctors, one row each.
DROP VIEW IF EXISTS vwUsersAndEmpDoctors;
CREATE VIEW vwUsersAndEmpDoctors AS
SELECT DISTINCT Username, Fullname, empID AS EmpID, Password, AccountStatus, BranchCode
FROM vwUsersDoctor;

-- A deleted account is kept here first: every column of Users, in its order, so that a
-- row copies across whole.
CREATE TABLE IF NOT EXISTS UsersArchive (
    Username VARCHAR(50) NOT NULL,
    Fullname VARCHAR(150),
    Password VARCHAR(100),
    SaltedPass VARCHAR(200),
    AccountStatus VARCHAR(20),
    BranchCode VARCHAR(50),
    EmpID VARCHAR(50),
    hospID VARCHAR(20),
    PassHash VARCHAR(255)
);
CREATE INDEX IF NOT EXISTS ix_usersarchive_username ON UsersArchive (Username);

-- The attendance items: a row with Remarks 'SEED' defines an item, the others count it.
CREATE TABLE IF NOT EXISTS hrecordsMonitor (
    SNo $ID,
    Description VARCHAR(100) NOT NULL,
    dtDate $DATE,
    numCount INTEGER DEFAULT 0,
    Remarks VARCHAR(50)
);
CREATE UNIQUE INDEX IF NOT EXISTS ix_hrecordsmonitor_item ON hrecordsMonitor (Description)
    WHERE Remarks = 'SEED';

CREATE TABLE IF NOT EXISTS hrecordsMonitorDetails (
    SNo $ID,
    Description VARCHAR(100) NOT NULL,
    consultID VARCHAR(20),
    dtDate $DATE,
    numCount INTEGER DEFAULT 0
);
CREATE INDEX IF NOT EXISTS ix_hrecordsmonitordetails_description
    ON hrecordsMonitorDetails (Description);
