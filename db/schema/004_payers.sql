-- Payers and their price lists; the chart of accounts that each new client gets a
-- receivable account in.
--@db HOSPITAL

-- The schemes an HMO sells, one row per payer and category.
CREATE TABLE hRetainershipScheme (
    retainID VARCHAR(20) NOT NULL,
    retainName VARCHAR(200),
    Contact VARCHAR(150),
    Address VARCHAR(250),
    PhoneNo VARCHAR(40),
    Email VARCHAR(100),
    Active VARCHAR(3),
    retainCode VARCHAR(20),
    clientCatID VARCHAR(30) NOT NULL,
    ClientType VARCHAR(20),
    PRIMARY KEY (retainID, clientCatID)
);

-- The list screen's read model. Category is the billing category the client was saved
-- with.
CREATE VIEW vwhretainershipAll AS
SELECT retainCode AS RetainCode, retainID, retainName AS ClientName, AcctID AS AccountNo,
       ClientType, clientCatID AS Category, Address, PhoneNo, Email, Contact, Active,
       COALESCE(Debt, 0) AS Debt, BillEndDate, COALESCE(RegAmount, 0) AS RegAmount,
       COALESCE(ConAmount, 0) AS ConAmount, COALESCE(CardRenewAmount, 0) AS CardRenewAmount
FROM hRetainership;

-- Every code a payer is known by, key and billing code alike: a new code is counted on
-- from the highest, so it can clash with neither.
CREATE VIEW vwhRetainCode AS
SELECT retainID AS retaincode FROM hRetainership
UNION
SELECT retainCode FROM hRetainership WHERE retainCode IS NOT NULL;

CREATE VIEW vwhRetainerShip AS
SELECT retainID AS RetainID, retainName AS ClientName FROM hRetainership;

-- The master lists the pharmacy, the laboratory and the service desks keep. Price is the
-- hospital's own price; payer lists start from 0 and are priced by hand.
CREATE TABLE drugMaster (
    SNo $ID,
    drgName VARCHAR(200) NOT NULL,
    drgCatName VARCHAR(100),
    pharmCat VARCHAR(100),
    Capitated VARCHAR(3) DEFAULT 'NO',
    Price $REAL DEFAULT 0
);

CREATE TABLE LabServices (
    SNo $ID,
    labName VARCHAR(200) NOT NULL,
    labCatName VARCHAR(100),
    Capitated VARCHAR(3) DEFAULT 'NO',
    Price $REAL DEFAULT 0
);

CREATE TABLE HserviceCat (
    catName VARCHAR(100) NOT NULL PRIMARY KEY
);

CREATE TABLE hServices (
    SNo $ID,
    ServName VARCHAR(200) NOT NULL,
    servCatName VARCHAR(100),
    Capitated VARCHAR(3) DEFAULT 'NO',
    Price $REAL DEFAULT 0
);

-- Price lists, one row per item per payer. Company holds the payer's code, CoyName its
-- name. The index serves the list of one payer and the pass-on of one item's price.
CREATE TABLE DrugNHIS (
    SNo $ID,
    drgName VARCHAR(200),
    drgCatName VARCHAR(100),
    Price $REAL DEFAULT 0,
    Company VARCHAR(20) NOT NULL,
    CoyName VARCHAR(200),
    pharmCat VARCHAR(100),
    Remarks VARCHAR(50),
    Capitated VARCHAR(3) DEFAULT 'NO',
    tariffStatus VARCHAR(20) DEFAULT 'FIXED'
);
CREATE INDEX ix_drugnhis_company ON DrugNHIS (Company, drgName);

CREATE TABLE LabServiceNHIS (
    SNo $ID,
    labName VARCHAR(200),
    labCatName VARCHAR(100),
    Price $REAL DEFAULT 0,
    Company VARCHAR(20) NOT NULL,
    CoyName VARCHAR(200),
    Remarks VARCHAR(50),
    Capitated VARCHAR(3) DEFAULT 'NO',
    tariffStatus VARCHAR(20) DEFAULT 'FIXED'
);
CREATE INDEX ix_labservicenhis_company ON LabServiceNHIS (Company, labName);

CREATE TABLE hServiceNHIS (
    SNo $ID,
    ServName VARCHAR(200),
    servCatName VARCHAR(100),
    Price $REAL DEFAULT 0,
    Company VARCHAR(20) NOT NULL,
    CoyName VARCHAR(200),
    Remarks VARCHAR(50),
    Capitated VARCHAR(3) DEFAULT 'NO',
    tariffStatus VARCHAR(20) DEFAULT 'FIXED'
);
CREATE INDEX ix_hservicenhis_company ON hServiceNHIS (Company, ServName);

-- Which list each payer has, and whose list it follows at which factor (own list: itself
-- at 1). A price edit on a list is passed on to every row naming it in useTariff.
CREATE TABLE DrugNHISListEntered (
    CoyID VARCHAR(20) NOT NULL,
    Type VARCHAR(10) NOT NULL,
    remarks VARCHAR(50),
    useTariff VARCHAR(20),
    Pcent $REAL DEFAULT 1,
    PRIMARY KEY (CoyID, Type)
);
CREATE INDEX ix_drugnhislistentered_use ON DrugNHISListEntered (Type, useTariff);

-- The payers a list can be made for, with their kind.
CREATE VIEW vwCoyAndNHIS AS
SELECT retainName AS company, retainID AS coyID, ClientType AS Remarks FROM hRetainership;

CREATE VIEW vwDrugNHISListEntered AS
SELECT r.retainName AS coyname, l.CoyID AS coyID, l.Type AS type
FROM DrugNHISListEntered l
JOIN hRetainership r ON r.retainID = l.CoyID;

CREATE VIEW vwhRetainershipUseTariff AS
SELECT u.retainName AS UseName, l.useTariff AS UseTariff, l.Pcent AS pcent, l.Type AS type,
       l.CoyID AS coyID
FROM DrugNHISListEntered l
LEFT JOIN hRetainership u ON u.retainID = l.useTariff;

CREATE VIEW vwDrugNHIS AS
SELECT SNo AS SNO, drgName AS Drug, drgCatName AS Category, Price, Capitated,
       tariffStatus AS TariffStatus, CoyName AS Company, pharmCat AS PharmCat,
       Remarks, Company AS CoyID
FROM DrugNHIS;

CREATE VIEW vwLabServiceNHIS AS
SELECT SNo AS SNO, labName AS LabItem, labCatName AS Category, Price, Capitated,
       tariffStatus AS TariffStatus, CoyName AS Company, Remarks, Company AS CoyID
FROM LabServiceNHIS;

CREATE VIEW vwServiceNHIS AS
SELECT SNo AS SNO, ServName AS Service, servCatName AS Category, Price, Capitated,
       tariffStatus AS TariffStatus, CoyName AS Company, Remarks, Company AS CoyID
FROM hServiceNHIS;

--@db Accounting

-- The ledger's account groups. Accounts of a group are numbered from GroupMin to
-- GroupMax; isContra marks groups whose balance runs against their class (1 = yes).
CREATE TABLE AccountGroups (
    GroupID VARCHAR(50) NOT NULL PRIMARY KEY,
    GroupName VARCHAR(200) NOT NULL,
    GroupMin INTEGER NOT NULL,
    GroupMax INTEGER NOT NULL,
    isContra $SMALLINT NOT NULL DEFAULT 0
);

-- One row per account opened, in the order opened: the register of account numbers.
CREATE TABLE ChartOfAccountMaster (
    SNo $ID,
    AccountID VARCHAR(50) NOT NULL UNIQUE,
    CoyID VARCHAR(100),
    CreatedBy VARCHAR(100),
    CreatedOn $TIMESTAMP
);

-- The accounts themselves. ExtID/ExtIDType name what the account was opened for (a
-- client's retainID and "RECEIVABLE"). Amounts are the opening and the current closing
-- balance; the front desk posts nothing, so it only ever writes 0 here.
CREATE TABLE ChartOfAccounts (
    SNo $ID,
    AccountID VARCHAR(50) NOT NULL UNIQUE,
    AccountName VARCHAR(1000) NOT NULL,
    groupID VARCHAR(50) NOT NULL,
    AccountOpAmt $REAL NOT NULL DEFAULT 0,
    AccountClAmt $REAL NOT NULL DEFAULT 0,
    AccountCat VARCHAR(100),
    AccountDesc VARCHAR(100),
    AccountAddress VARCHAR(250),
    AccountSalesTaxNo VARCHAR(50),
    Period VARCHAR(100),
    CoyID VARCHAR(100),
    UserName VARCHAR(100),
    ExtID VARCHAR(100),
    ExtIDType VARCHAR(100)
);
CREATE INDEX ix_chartofaccounts_group ON ChartOfAccounts (groupID, AccountName);
