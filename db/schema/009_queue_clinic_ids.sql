-- A visit keeps the name of its clinic (hRecords.clinicType) while the doctors' queues are
-- keyed by the clinic's ID: the waiting list looks the ID up by name, and the grouped queue
-- finds a doctor's waiting patients through it.
--@db HOSPITAL

DROP VIEW vwDocWaitingListGrouped;
DROP VIEW vwDocWaitingList;

-- The patients still waiting for each doctor. A visit to a clinic no longer on file keeps
-- its name in place of the ID, so that it still shows.
CREATE VIEW vwDocWaitingList AS
SELECT r.recDate AS "Date",
       COALESCE((SELECT a.ConRoomNo FROM hConRoomAssign a
                 WHERE a.docNo = r.DocAssigned AND a.schdDate = r.recDate LIMIT 1),
                'RM XXX') AS RoomNo,
       r.clinicType AS ClinicName, u.Fullname AS Doctor,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Patient,
       r.DocAssigned AS empID,
       COALESCE((SELECT c.ClinicID FROM clinicTypes c WHERE c.clinicName = r.clinicType
                 ORDER BY c.ClinicID LIMIT 1), r.clinicType) AS ClinicID
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
  AND NOT EXISTS (SELECT 1 FROM vwDocWaitingList w
                  WHERE w.empID = a.docNo AND w."Date" = a.schdDate
                    AND w.ClinicID = q.ClinicID);
