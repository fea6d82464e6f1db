-- Every installation, demo or hospital: the roles of the suite, the settings the module
-- starts from, the client types and billing categories, the private payer and the purposes
-- of a visit. The hospital itself, its number series and its first user are written by the
-- program with the values the administrator gives.
--@db HOSPITAL

INSERT INTO Roles (RoleID, LoginRole, MinVer) VALUES
    (1, 'RECORDS', 21), (2, 'MANAGEMENT', 0), (3, 'ACCOUNTS', 0), (4, 'PHARMACY', 0), (5, 'CONSULTING', 0);

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

INSERT INTO hClientType (clientType) VALUES ('PRIVATE'), ('COMPANY'), ('HMO'), ('NHIS'), ('FFS'), ('PHIS');

INSERT INTO billingPrice (clientCatID, clientCat, clientType) VALUES
    ('PRIVATE', 'PRIVATE PATIENTS', 'PRIVATE'),
    ('CORPORATE', 'CORPORATE CLIENTS', 'COMPANY'),
    ('RETAINER', 'RETAINERSHIP', 'COMPANY'),
    ('HMO', 'HEALTH MAINTENANCE ORGANISATIONS', 'HMO'),
    ('NHIS', 'NATIONAL HEALTH INSURANCE', 'NHIS'),
    ('PHIS', 'PRIVATE HEALTH INSURANCE', 'HMO');

-- Self-paying patients: the payer the PRIVATE setting names.
INSERT INTO hRetainership (retainID, retainCode, retainName, ClientType, clientCatID, Contact,
                           Address, PhoneNo, Email, Active, RegAmount, ConAmount,
                           CardRenewAmount) VALUES
    ('0001', 'PVT', 'PRIVATE PATIENTS', 'PRIVATE', 'PRIVATE', '', '', '', '', 'YES', 2000, 3000,
     1500);

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
