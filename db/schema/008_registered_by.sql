-- The day's registrations name who registered each patient by user name, as the day's
-- attendance names who took each visit; the patient row keeps the employee id.
DROP VIEW qryhNewReg;
CREATE VIEW qryhNewReg AS
SELECT p.officeAddress, p.regDate AS RegDate, p.PNo,
       COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS Fullname,
       p.sex AS Sex, p.CardType, p.pCatID, p.oldPno AS oldpNo, p.CoyName AS coyNAme,
       p.coyType, p.empno AS empNo, p.branch, p.status, p.policyType, p.pPhoneNo,
       t.retainName, p.clientCatID,
       CASE WHEN p.patPix IS NULL THEN 'NO' ELSE 'YES' END AS HasPix,
       COALESCE((SELECT u.Username FROM ApplicationUsers u WHERE u.EmpID = p.Username LIMIT 1),
                p.Username) AS username,
       t.ClientType AS clientCatID2, t.retainCode
FROM hPatients p
LEFT JOIN hRetainership t ON t.retainID = p.CoyName;
