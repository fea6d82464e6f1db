-- The patient record, the users who may run the module, and the settings it starts from.
--@db HOSPITAL

CREATE TABLE AppDefaults (
    ID VARCHAR(100) NOT NULL PRIMARY KEY,
    IDVal VARCHAR(500)
);

-- One row per hospital of the group; users belong to one.
CREATE TABLE hHospital (
    hospID VARCHAR(20) NOT NULL PRIMARY KEY,
    HName VARCHAR(200) NOT NULL,
    HNo VARCHAR(10),
    Address VARCHAR(250),
    PhoneNo VARCHAR(40)
);

CREATE TABLE ApplicationUsers (
    Username VARCHAR(50) NOT NULL PRIMARY KEY,
    Fullname VARCHAR(150),
    Password VARCHAR(100),
    SaltedPass VARCHAR(200),
    AccountStatus VARCHAR(20) DEFAULT 'Enabled',
    BranchCode VARCHAR(50),
    EmpID VARCHAR(50),
    hospID VARCHAR(20)
);
CREATE UNIQUE INDEX ix_applicationusers_lower ON ApplicationUsers (lower(Username));

CREATE TABLE Roles (
    RoleID INTEGER NOT NULL PRIMARY KEY,
    LoginRole VARCHAR(50) NOT NULL,
    MinVer $SMALLINT
);

CREATE TABLE UserRoles (
    RoleID INTEGER NOT NULL,
    Username VARCHAR(50) NOT NULL,
    PRIMARY KEY (RoleID, Username)
);

-- One row per user and role: who may run which module of the suite.
CREATE VIEW vwUsers AS
SELECT u.Username, u.Fullname, u.EmpID AS empID, u.hospID, h.HName, r.LoginRole,
       u.Password, u.AccountStatus, u.BranchCode
FROM ApplicationUsers u
JOIN UserRoles ur ON ur.Username = u.Username
JOIN Roles r ON r.RoleID = ur.RoleID
LEFT JOIN hHospital h ON h.hospID = u.hospID;

-- The server's clock: every business date of the program comes from here.
CREATE VIEW qrySysDateTime AS SELECT $NOW AS sysDT;

-- Number series. A series carries its own prefix and width so that the desks never need
-- to know how an identifier is composed.
CREATE TABLE idgen (
    destName VARCHAR(50) NOT NULL PRIMARY KEY,
    id INTEGER NOT NULL DEFAULT 0,
    prefix VARCHAR(20) NOT NULL DEFAULT '',
    width INTEGER NOT NULL DEFAULT 0
);

CREATE TABLE hClientType (
    clientType VARCHAR(20) NOT NULL PRIMARY KEY
);

-- Billing categories (tariffs) and the client type each belongs to.
CREATE TABLE billingPrice (
    clientCatID VARCHAR(30) NOT NULL PRIMARY KEY,
    clientCat VARCHAR(100),
    clientType VARCHAR(20)
);

CREATE TABLE hRetainership (
    retainID VARCHAR(20) NOT NULL PRIMARY KEY,
    retainCode VARCHAR(20),
    retainName VARCHAR(200),
    ClientType VARCHAR(20),
    clientCatID VARCHAR(30),
    Contact VARCHAR(150),
    Address VARCHAR(250),
    PhoneNo VARCHAR(40),
    Email VARCHAR(100),
    Active VARCHAR(3) DEFAULT 'YES',
    BillEndDate VARCHAR(2) DEFAULT '31',
    ConAmount $REAL DEFAULT 0,
    RegAmount $REAL DEFAULT 0,
    CardRenewAmount $REAL DEFAULT 0,
    RetainDate $DATE,
    AcctID VARCHAR(50),
    Debt $REAL DEFAULT 0
);

CREATE TABLE hPatientArea (
    AreaName VARCHAR(100) NOT NULL PRIMARY KEY
);

CREATE TABLE hClinicPurpose (
    Purpose VARCHAR(50) NOT NULL PRIMARY KEY
);

CREATE TABLE hPatients (
    PNo VARCHAR(13) NOT NULL,
    oldPno VARCHAR(40),
    Principal VARCHAR(13),
    pCatID VARCHAR(20),
    Username VARCHAR(50),
    Title VARCHAR(20),
    psurname VARCHAR(100),
    pfirstName VARCHAR(150),
    homeAddress VARCHAR(250),
    officeAddress VARCHAR(250),
    Area VARCHAR(100),
    pPhoneNo VARCHAR(40),
    Email VARCHAR(100),
    sex VARCHAR(10),
    DOB $DATE,
    Maturity VARCHAR(20),
    MStatus VARCHAR(20),
    bloodGroup VARCHAR(20),
    genotype VARCHAR(5),
    religion VARCHAR(20),
    occupation VARCHAR(100),
    nextOfKin VARCHAR(150),
    NOKPhone VARCHAR(40),
    kinAddress VARCHAR(250),
    relationToKin VARCHAR(20),
    CoyName VARCHAR(20),
    coyType VARCHAR(20),
    clientCatID VARCHAR(30),
    empno VARCHAR(50),
    policyType VARCHAR(150),
    ref VARCHAR(3),
    HmoRef VARCHAR(3),
    introducedby VARCHAR(50),
    CardType VARCHAR(10),
    fileduration VARCHAR(30),
    regDate $DATE,
    expirydate $DATE,
    expired $SMALLINT NOT NULL DEFAULT 0,
    NewReg VARCHAR(3),
    AdmissionDaysLimit $REAL DEFAULT 0,
    Debt $REAL DEFAULT 0,
    DebtBF $REAL DEFAULT 0,
    isRev $SMALLINT DEFAULT 0,
    patPix $BLOB,
    ANCInfo TEXT,
    LastPurpose VARCHAR(50),
    LastClinicVisited VARCHAR(100),
    LastAttndDate $DATE,
    LastConsultID VARCHAR(20),
    branch VARCHAR(50),
    status VARCHAR(50),
    relationToStaff VARCHAR(50),
    pMembers VARCHAR(50),
    Color VARCHAR(20),
    CoyClass VARCHAR(50),
    DrgRxn TEXT,
    PastMedHist TEXT,
    LatestBillNo VARCHAR(20),
    isEnrol $SMALLINT DEFAULT 0,
    hospID VARCHAR(20),
    PRIMARY KEY (PNo)
);
CREATE INDEX ix_hpatients_oldpno ON hPatients (oldPno);
CREATE INDEX ix_hpatients_surname ON hPatients (psurname);
CREATE INDEX ix_hpatients_phone ON hPatients (pPhoneNo);
CREATE INDEX ix_hpatients_principal ON hPatients (Principal);
CREATE INDEX ix_hpatients_coyname ON hPatients (CoyName);
CREATE INDEX ix_hpatients_regdate ON hPatients (regDate);
-- The expiry sweep at start-up only ever looks at cards not yet declared expired.
CREATE INDEX ix_hpatients_expiry ON hPatients (expirydate) WHERE expired = 0;

CREATE TABLE hpatientsArchive (
    PNo VARCHAR(13),
    oldPno VARCHAR(40),
    Principal VARCHAR(13),
    pCatID VARCHAR(20),
    Username VARCHAR(50),
    Title VARCHAR(20),
    psurname VARCHAR(100),
    pfirstName VARCHAR(150),
    homeAddress VARCHAR(250),
    officeAddress VARCHAR(250),
    Area VARCHAR(100),
    pPhoneNo VARCHAR(40),
    Email VARCHAR(100),
    sex VARCHAR(10),
    DOB $DATE,
    Maturity VARCHAR(20),
    MStatus VARCHAR(20),
    bloodGroup VARCHAR(20),
    genotype VARCHAR(5),
    religion VARCHAR(20),
    occupation VARCHAR(100),
    nextOfKin VARCHAR(150),
    NOKPhone VARCHAR(40),
    kinAddress VARCHAR(250),
    relationToKin VARCHAR(20),
    CoyName VARCHAR(20),
    coyType VARCHAR(20),
    clientCatID VARCHAR(30),
    empno VARCHAR(50),
    policyType VARCHAR(150),
    ref VARCHAR(3),
    HmoRef VARCHAR(3),
    introducedby VARCHAR(50),
    CardType VARCHAR(10),
    fileduration VARCHAR(30),
    regDate $DATE,
    expirydate $DATE,
    expired $SMALLINT DEFAULT 0,
    NewReg VARCHAR(3),
    AdmissionDaysLimit $REAL DEFAULT 0,
    Debt $REAL DEFAULT 0,
    DebtBF $REAL DEFAULT 0,
    isRev $SMALLINT DEFAULT 0,
    patPix $BLOB,
    ANCInfo TEXT,
    LastPurpose VARCHAR(50),
    LastClinicVisited VARCHAR(100),
    LastAttndDate $DATE,
    LastConsultID VARCHAR(20),
    branch VARCHAR(50),
    status VARCHAR(50),
    relationToStaff VARCHAR(50),
    pMembers VARCHAR(50),
    Color VARCHAR(20),
    CoyClass VARCHAR(50),
    DrgRxn TEXT,
    PastMedHist TEXT,
    LatestBillNo VARCHAR(20),
    isEnrol $SMALLINT DEFAULT 0,
    hospID VARCHAR(20)
);
CREATE INDEX ix_hpatientsarchive_pno ON hpatientsArchive (PNo);

CREATE TABLE hPatientsOldCardNoHist (
    SNo $ID,
    PNo VARCHAR(13) NOT NULL,
    OldCardNo VARCHAR(40),
    CardYear INTEGER
);
CREATE INDEX ix_hpatientsoldcardnohist_pno ON hPatientsOldCardNoHist (PNo);

-- One row per service-point event of a visit.
CREATE TABLE hPatientsTimeline (
    SNo $ID,
    PNo VARCHAR(13),
    consultID VARCHAR(20),
    ServicePoint VARCHAR(50),
    EntryOrExit VARCHAR(20),
    EntryDate $DATE,
    EntryTime VARCHAR(10),
    Username VARCHAR(50)
);
CREATE INDEX ix_hpatientstimeline_consultid ON hPatientsTimeline (consultID);
CREATE INDEX ix_hpatientstimeline_pno ON hPatientsTimeline (PNo);

-- The read model of every patient grid.
CREATE VIEW vwhpatients AS
SELECT COALESCE(p.psurname, '') || ' ' || COALESCE(p.pfirstName, '') AS FullName,
       p.AdmissionDaysLimit, p.Title AS title, p.PNo AS pno, p.oldPno, p.regDate,
       p.psurname AS Surname, p.pfirstName AS Firstname, p.homeAddress, p.Area,
       p.officeAddress AS OfficeAddress, p.pPhoneNo AS PhoneNo, p.DOB, p.CoyName AS coyname,
       r.retainName AS Client, p.Email AS email, p.sex AS Sex, p.clientCatID AS BillingCat,
       p.pCatID AS patcat, p.empno AS empNo, p.introducedby AS introducedBy, p.CardType,
       p.MStatus AS Marital, p.bloodGroup, p.genotype, p.occupation, p.religion, p.nextOfKin,
       p.NOKPhone AS nokPhone, p.relationToKin, p.kinAddress, p.fileduration AS fileDuration,
       p.Maturity, p.ref, p.HmoRef, p.expirydate AS ExpiryDate, p.NewReg AS newReg,
       p.policyType, p.LastAttndDate, p.coyType, p.expired, p.Principal, p.Username,
       p.Debt, p.DebtBF, p.LastPurpose, p.LastClinicVisited, p.LastConsultID
FROM hPatients p
LEFT JOIN hRetainership r ON r.retainID = p.CoyName;

--@db Accounting

CREATE TABLE AppDefaults (
    ID VARCHAR(100) NOT NULL PRIMARY KEY,
    IDVal VARCHAR(500)
);

--@db SmsCenter

CREATE TABLE AppDefaults (
    ID VARCHAR(100) NOT NULL PRIMARY KEY,
    IDVal VARCHAR(500)
);
