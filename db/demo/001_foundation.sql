-- Demo installation: one hospital, a records officer who may run the module, the settings
-- it starts from, the payers and categories a desk chooses from. Plain INSERTs that both
-- backends accept.
--@db HOSPITAL

INSERT INTO hHospital (hospID, HName, HNo, Address, PhoneNo) VALUES
    ('001', 'TOLMAR SPECIALIST HOSPITAL', '001', '12 HOSPITAL ROAD, IKEJA, LAGOS', '08012345678');

INSERT INTO Roles (RoleID, LoginRole, MinVer) VALUES
    (1, 'RECORDS', 21), (2, 'MANAGEMENT', 0), (3, 'ACCOUNTS', 0), (4, 'PHARMACY', 0);

INSERT INTO ApplicationUsers (Username, Fullname, Password, AccountStatus, EmpID, hospID) VALUES
    ('demo', 'ADAEZE OKAFOR', '', 'Enabled', 'EMP001', '001'),
    ('manager', 'TUNDE BALOGUN', '', 'Enabled', 'EMP002', '001'),
    ('cashier', 'HAUWA BELLO', '', 'Enabled', 'EMP003', '001');

INSERT INTO UserRoles (RoleID, Username) VALUES
    (1, 'demo'), (2, 'demo'), (1, 'manager'), (2, 'manager'), (3, 'cashier');

-- The counters hold the last number handed out.
INSERT INTO idgen (destName, id, prefix, width) VALUES
    ('PATIENT2', 0, '001/', 9), ('ConsultID2', 0, '001', 9), ('Patient', 0, '', 0);

INSERT INTO AppDefaults (ID, IDVal) VALUES
    ('PVT_CONFEE_SNO', '2'),
    ('PVT_REGFEE_SNO', '1'),
    ('PRIVATE', '0001'),
    ('AUTO_CARD_NO', 'YES'),
    ('PIXLOC', 'DB'),
    ('Coy_Code', 'SHORT'),
    ('SendSMS', 'YES'),
    ('Revtype_Consult', 'CONSULTATION'),
    ('CoyID', '0001'),
    ('AcctPostOn', 'False'),
    ('LockOldVersion', 'YES'),
    ('AppLocation', 'Ikeja'),
    ('LockAttendanceForInPatients', 'YES'),
    ('LockMultipleAttendnace', 'YES'),
    ('SearchValue', '20'),
    ('SearchWaitTime', '700'),
    ('TimeLineVersion', 'NEW'),
    ('Clinic_PhoneNo', '08012345678'),
    ('Clinic_Period', 'Between 10am - 3pm'),
    ('Admission_Limit_Exists', 'YES'),
    ('App_Location_Change', 'YES'),
    ('Assign_Doctors_to_Consulting_Rooms', 'NO'),
    ('Mail_Activated', 'No');

INSERT INTO hClientType (clientType) VALUES ('PRIVATE'), ('COMPANY'), ('HMO'), ('NHIS');

INSERT INTO billingPrice (clientCatID, clientCat, clientType) VALUES
    ('PRIVATE', 'PRIVATE PATIENTS', 'PRIVATE'),
    ('CORPORATE', 'CORPORATE CLIENTS', 'COMPANY'),
    ('RETAINER', 'RETAINERSHIP', 'COMPANY'),
    ('HMO', 'HEALTH MAINTENANCE ORGANISATIONS', 'HMO'),
    ('NHIS', 'NATIONAL HEALTH INSURANCE', 'NHIS'),
    ('PHIS', 'PRIVATE HEALTH INSURANCE', 'HMO');

INSERT INTO hRetainership (retainID, retainCode, retainName, ClientType, clientCatID, Contact,
                           Address, PhoneNo, Email, Active) VALUES
    ('0001', 'PVT', 'PRIVATE PATIENTS', 'PRIVATE', 'PRIVATE', '', '', '', '', 'YES'),
    ('0002', 'DANG', 'DANBURY FLOUR MILLS', 'COMPANY', 'CORPORATE', 'MRS ALABI',
     '1 ALFRED REWANE RD, IKOYI', '08033334444', 'hr@example.com', 'YES'),
    ('0003', 'NPSC', 'NORTHGATE PETROLEUM STAFF CLINIC', 'COMPANY', 'RETAINER', 'DR EKPO',
     'HERBERT MACAULAY WAY', '08055556666', '', 'YES'),
    ('0004', 'HYLOVA', 'HYLOVA HMO', 'HMO', 'HMO', 'CLAIMS DESK', 'LEKKI PHASE 1',
     '08077778888', 'claims@example.com', 'YES'),
    ('0005', 'AXL', 'AXEL MANDRELL HEALTH', 'HMO', 'HMO', 'CLAIMS DESK', 'VICTORIA ISLAND',
     '08099990000', '', 'YES'),
    ('0006', 'NHIS', 'FEDERAL STAFF HEALTH INSURANCE SCHEME', 'NHIS', 'NHIS', 'ZONAL OFFICE',
     'ABUJA', '08011112222', '', 'YES'),
    ('0007', 'O''DEX', 'O''DEX & SONS (NIG) LTD', 'COMPANY', 'CORPORATE', 'MR ÒKÉ',
     'APAPA WHARF', '08022223333', '', 'YES');

INSERT INTO hPatientArea (AreaName) VALUES
    ('IKEJA'), ('SURULERE'), ('YABA'), ('LEKKI'), ('IKOYI'), ('MUSHIN'), ('APAPA'),
    ('AGEGE'), ('OSHODI'), ('FESTAC');

INSERT INTO hClinicPurpose (Purpose) VALUES
    ('CONSULTATION'), ('REVIEW'), ('APPOINTMENT'), ('SCREENING'), ('INJECTION'),
    ('DRESSING'), ('LABORATORY'), ('ANTE-NATAL');

--@db Accounting

INSERT INTO AppDefaults (ID, IDVal) VALUES
    ('AcctPostLastPeriodCloseDate', '2025-12-31'),
    ('AcctPostBeyondCurrentCalendarMonth', 'NO'),
    ('AcctPostBelowLastPeriodClose', 'NO');

--@db SmsCenter

INSERT INTO AppDefaults (ID, IDVal) VALUES ('SendFrom', 'TOLMARHOSP');
