-- Views of SmsCenter that read the patients of HOSPITAL. SQLite keeps a view that spans
-- attached files only for the connection that made it, so every SmsCenter connection
-- makes them when it opens.
CREATE TEMP VIEW IF NOT EXISTS vwFullnamePatAttend AS
SELECT p.PNo AS pno, m.CatName AS Category, m.SNo AS SNoCat,
       'Dear ' || COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ' '
           || COALESCE(p.pfirstName, '') AS Fullname,
       'Dear ' || COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ',' AS Fullname2,
       m.Details, m.Details2, m.CatName AS Remarks, p.pPhoneNo AS PhoneNo
FROM HOSPITAL.hPatients p CROSS JOIN main.MessageCategory m;

CREATE TEMP VIEW IF NOT EXISTS vwFullnamePatAppt AS
SELECT p.PNo AS pno, m.CatName AS Category, m.SNo AS SNoCat,
       'Dear ' || COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ' '
           || COALESCE(p.pfirstName, '') AS Fullname,
       'Dear ' || COALESCE(p.Title || ' ', '') || COALESCE(p.psurname, '') || ',' AS Fullname2,
       m.Details, m.Details2, m.CatName AS Remarks, p.pPhoneNo AS PhoneNo
FROM HOSPITAL.hPatients p CROSS JOIN main.MessageCategory m;
