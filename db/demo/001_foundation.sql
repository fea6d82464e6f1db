-- Demo installation: one hospital, a records officer who may run the module, the payers a
-- desk chooses from and the areas patients live in. Plain INSERTs that both backends accept;
-- the settings and lists every installation starts from are in db/defaults.
--@db HOSPITAL

INSERT INTO ApplicationUsers (Username, Fullname, Password, AccountStatus, EmpID, hospID) VALUES
    ('demo', 'ADAEZE OKAFOR', '', 'Enabled', 'EMP001', '001'),
    ('manager', 'TUNDE BALOGUN', '', 'Enabled', 'EMP002', '001'),
    ('cashier', 'HAUWA BELLO', '', 'Enabled', 'EMP003', '001');

INSERT INTO UserRoles (RoleID, Username) VALUES
    (1, 'demo'), (2, 'demo'), (1, 'manager'), (2, 'manager'), (3, 'cashier');

INSERT INTO hRetainership (retainID, retainCode, retainName, ClientType, clientCatID, Contact,
                           Address, PhoneNo, Email, Active) VALUES
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
