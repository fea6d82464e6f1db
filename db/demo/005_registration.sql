-- Demo installation for the registration desk: clinics and their days, rooms, doctors and
-- the clinics they serve, staff, HMO plans, fees by payer, the desk's instant fees and the
-- service price list.
--@db HOSPITAL

-- Clinic IDs are short codes, unlike the names the desk picks and the visits keep.
INSERT INTO clinicTypes (ClinicID, clinicName, regfee, ConFee, Designation, empID, clinicdays)
VALUES
    ('GEN', 'GENERAL', 2000, 3000, 'GENERAL PRACTITIONER', 'DOC001', 'MON - FRI'),
    ('PAED', 'PAEDIATRICS', 2000, 5000, 'PAEDIATRICIAN', 'DOC002', 'MON, WED'),
    ('ANC', 'ANTE-NATAL', 2000, 4000, 'OBSTETRICIAN', 'DOC003', 'TUE, THU'),
    ('EYE', 'EYE CLINIC', 2000, 6000, 'OPHTHALMOLOGIST', 'DOC004', 'FRI'),
    ('INPAT', '(IN-PATIENT)', 0, 0, 'ADMISSIONS', 'DOC001', '');

INSERT INTO clinicDays (ClinicDay, StartTime, ClinicID, NumOfPat) VALUES
    ('MONDAY', '9:00 AM', 'PAED', 30),
    ('WEDNESDAY', '9:00 AM', 'PAED', 30),
    ('TUESDAY', '10:00 AM', 'ANC', 0),
    ('THURSDAY', '10:00 AM', 'ANC', 0),
    ('FRIDAY', '8:30 AM', 'EYE', 20);

INSERT INTO hConsultingRooms (ConRmName, Location) VALUES
    ('RM 1', 'GRD FLR'), ('RM 2', 'GRD FLR'), ('RM 3', '1ST FLR'), ('RM 4', '1ST FLR');

INSERT INTO ApplicationUsers (Username, Fullname, Password, AccountStatus, EmpID, hospID) VALUES
    ('dr.eze', 'DR CHIDI EZE', '', 'Enabled', 'DOC001', '001'),
    ('dr.bakare', 'DR FOLAKE BAKARE', '', 'Enabled', 'DOC002', '001'),
    ('dr.musa', 'DR IBRAHIM MUSA', '', 'Enabled', 'DOC003', '001'),
    ('dr.oyelaran', 'DR KEMI OYELARAN', '', 'Enabled', 'DOC004', '001');

INSERT INTO UserRoles (RoleID, Username) VALUES
    (5, 'dr.eze'), (5, 'dr.bakare'), (5, 'dr.musa'), (5, 'dr.oyelaran');

INSERT INTO userRoleClinic (Username, ClinicID) VALUES
    ('dr.eze', 'GEN'), ('dr.bakare', 'GEN'), ('dr.bakare', 'PAED'),
    ('dr.musa', 'ANC'), ('dr.musa', 'GEN'), ('dr.oyelaran', 'EYE');

INSERT INTO employees (empID, lastname, firstname, deptID, designation) VALUES
    ('EMP001', 'OKAFOR', 'ADAEZE', 'RECORDS', 'RECORDS OFFICER'),
    ('EMP002', 'BALOGUN', 'TUNDE', 'ADMIN', 'MANAGER'),
    ('EMP003', 'BELLO', 'HAUWA', 'ACCOUNTS', 'CASHIER'),
    ('DOC001', 'EZE', 'CHIDI', 'MEDICALS', 'MEDICAL OFFICER'),
    ('DOC002', 'BAKARE', 'FOLAKE', 'MEDICALS', 'CONSULTANT'),
    ('DOC003', 'MUSA', 'IBRAHIM', 'MEDICALS', 'CONSULTANT'),
    ('DOC004', 'OYELARAN', 'KEMI', 'MEDICALS', 'CONSULTANT'),
    ('EMP010', 'O''NEILL', 'GRACE', 'MARKETING', 'RELATIONSHIP OFFICER');

INSERT INTO HmoPlan (PlanID, planName, CoyCode, Remarks, "Limit", LimitPeriod) VALUES
    ('P0001', 'BRONZE', '0004', '', 50000, 'YEARLY'),
    ('P0002', 'GOLD', '0004', '', 250000, 'YEARLY'),
    ('P0003', 'STANDARD', '0005', '', 0, 'YEARLY'),
    ('P0004', 'FORMAL SECTOR', '0006', '', 0, 'YEARLY');

INSERT INTO hScreeningAmount (coycode, Amount) VALUES ('0002', 15000), ('0003', 12500);

UPDATE hRetainership SET RegAmount = 1000, ConAmount = 2500, CardRenewAmount = 1000
WHERE retainID IN ('0002', '0003', '0007');

INSERT INTO hInstantFee (ItemName, Amount, itemType) VALUES
    ('MEDICAL REPORT', 5000, 'RECORDS'),
    ('FOLDER REPLACEMENT', 1000, 'RECORDS'),
    ('CARD REPRINT', 500, 'RECORDS'),
    ('X-RAY FILM', 3500, 'RADIOLOGY');

INSERT INTO hServicePrices (service, type, Private, HMO, NHIS, MTHLY, "3MTHLY", "6MTHLY",
                            CBN, NEPA)
VALUES
    ('ATTENDANCE', 'OPD', 1000, 800, 500, 900, 850, 800, 700, 600),
    ('CONSULTATION', 'OPD', 3000, 2500, 1500, 2800, 2700, 2600, 2400, 2200),
    ('ANTENATAL', 'OPD', 15000, 12000, 8000, 14000, 13500, 13000, 11000, 10000);
