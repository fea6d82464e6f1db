-- Demo installation: more payers, the hospital's master lists of drugs, investigations and
-- services (a few thousand items, built from generics, strengths and packs), price lists
-- for some payers of their own and for others that follow them at a percentage, and the
-- receivable accounts of the ledger.
--@db HOSPITAL

INSERT INTO hRetainership (retainID, retainCode, retainName, ClientType, clientCatID, Contact,
                           Address, PhoneNo, Email, Active, BillEndDate, ConAmount, RegAmount,
                           CardRenewAmount, AcctID) VALUES
    ('0008', '0008', 'RELMONT HMO', 'HMO', 'HMO', 'CLAIMS OFFICER', '23 ADEOLA ODEKU, VI',
     '08031112222', 'claims@relmont.example', 'YES', '25', 3000, 2000, 1500, '12000003'),
    ('0009', '0009', 'LEAMORE HEALTH', 'HMO', 'HMO', 'MR OLADIPO', '121 IKORODU ROAD, ONIPANU',
     '08032223333', '', 'YES', '31', 2500, 2000, 1000, '12000004'),
    ('0010', '0010', 'CLEMBROOK HMO', 'HMO', 'PHIS', 'MRS EZE', '8 ALLEN AVENUE, IKEJA',
     '08033334445', '', 'YES', '31', 2500, 1500, 1000, NULL),
    ('0011', '0011', 'FIRSTLINE BANKING PLC', 'COMPANY', 'CORPORATE', 'HEAD, HR',
     '35 MARINA, LAGOS ISLAND', '08034445556', 'hr@firstline.example', 'YES', '20', 5000, 3000,
     2000, '12000005'),
    ('0012', '0012', 'LAGOON WATERWORKS CORPORATION', 'COMPANY', 'RETAINER', 'MR ADEYEMI',
     'IJORA CAUSEWAY', '08035556667', '', 'YES', '31', 4000, 2500, 1500, NULL),
    ('0013', '0013', 'ST. MARY''S SCHOOL (OLD BOYS)', 'COMPANY', 'CORPORATE', 'THE BURSAR',
     '4 CHURCH STREET, YABA', '08036667778', '', 'NO', '31', 3500, 2000, 1000, NULL),
    ('0014', '0014', 'FEE FOR SERVICE PATIENTS', 'FFS', 'FFS', '', 'IKEJA', '', '', 'YES',
     '31', 0, 0, 0, NULL),
    ('0015', '0015', 'TOLVEN CARE TRUST', 'HMO', 'HMO', 'MISS NWOSU', '5 AKIN ADESOLA, VI',
     '08037778889', '', 'YES', '31', 3000, 2000, 1500, NULL);

UPDATE hRetainership SET AcctID = '12000001' WHERE retainID = '0002';
UPDATE hRetainership SET AcctID = '12000002' WHERE retainID = '0004';

INSERT INTO hRetainershipScheme (retainID, retainName, Contact, Address, PhoneNo, Email,
                                 Active, retainCode, clientCatID, ClientType)
SELECT retainID, retainName, Contact, Address, PhoneNo, Email, Active, retainCode, c.cat,
       c.cat
FROM hRetainership
CROSS JOIN (SELECT 'HMO' AS cat UNION ALL SELECT 'NHIS' UNION ALL SELECT 'FFS') c
WHERE ClientType = 'HMO';

-- Drugs: each generic in five strengths and six packs.
INSERT INTO drugMaster (drgName, drgCatName, pharmCat, Capitated, Price)
WITH g(name, cat, pharm, form, price) AS (VALUES
    ('PARACETAMOL', 'ANALGESICS', 'ORAL SOLIDS', 'TABLET', 20),
    ('IBUPROFEN', 'ANALGESICS', 'ORAL SOLIDS', 'TABLET', 30),
    ('DICLOFENAC SODIUM', 'ANALGESICS', 'ORAL SOLIDS', 'TABLET', 35),
    ('PENTAZOCINE', 'ANALGESICS', 'INJECTABLES', 'INJECTION', 250),
    ('TRAMADOL', 'ANALGESICS', 'ORAL SOLIDS', 'CAPSULE', 60),
    ('ASPIRIN', 'ANALGESICS', 'ORAL SOLIDS', 'TABLET', 10),
    ('AMOXICILLIN', 'ANTIBIOTICS', 'ORAL SOLIDS', 'CAPSULE', 40),
    ('AMOXICILLIN-CLAVULANATE', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 180),
    ('AMPICILLIN-CLOXACILLIN', 'ANTIBIOTICS', 'ORAL SOLIDS', 'CAPSULE', 45),
    ('CIPROFLOXACIN', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 70),
    ('LEVOFLOXACIN', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 150),
    ('AZITHROMYCIN', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 200),
    ('ERYTHROMYCIN', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 50),
    ('CEFTRIAXONE', 'ANTIBIOTICS', 'INJECTABLES', 'INJECTION', 900),
    ('CEFUROXIME', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 350),
    ('GENTAMICIN', 'ANTIBIOTICS', 'INJECTABLES', 'INJECTION', 150),
    ('METRONIDAZOLE', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 15),
    ('DOXYCYCLINE', 'ANTIBIOTICS', 'ORAL SOLIDS', 'CAPSULE', 30),
    ('CO-TRIMOXAZOLE', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 20),
    ('NITROFURANTOIN', 'ANTIBIOTICS', 'ORAL SOLIDS', 'TABLET', 40),
    ('ARTEMETHER-LUMEFANTRINE', 'ANTIMALARIALS', 'ORAL SOLIDS', 'TABLET', 120),
    ('ARTESUNATE', 'ANTIMALARIALS', 'INJECTABLES', 'INJECTION', 1200),
    ('DIHYDROARTEMISININ-PIPERAQUINE', 'ANTIMALARIALS', 'ORAL SOLIDS', 'TABLET', 220),
    ('QUININE', 'ANTIMALARIALS', 'INJECTABLES', 'INJECTION', 300),
    ('SULFADOXINE-PYRIMETHAMINE', 'ANTIMALARIALS', 'ORAL SOLIDS', 'TABLET', 60),
    ('AMLODIPINE', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 25),
    ('LISINOPRIL', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 40),
    ('LOSARTAN', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 60),
    ('NIFEDIPINE', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 20),
    ('HYDROCHLOROTHIAZIDE', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 15),
    ('FUROSEMIDE', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 15),
    ('METHYLDOPA', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 30),
    ('ATENOLOL', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 25),
    ('ATORVASTATIN', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 90),
    ('SPIRONOLACTONE', 'CARDIOVASCULAR', 'ORAL SOLIDS', 'TABLET', 45),
    ('METFORMIN', 'ANTIDIABETICS', 'ORAL SOLIDS', 'TABLET', 20),
    ('GLIBENCLAMIDE', 'ANTIDIABETICS', 'ORAL SOLIDS', 'TABLET', 15),
    ('GLIMEPIRIDE', 'ANTIDIABETICS', 'ORAL SOLIDS', 'TABLET', 50),
    ('SOLUBLE INSULIN', 'ANTIDIABETICS', 'INJECTABLES', 'INJECTION', 3500),
    ('INSULIN GLARGINE', 'ANTIDIABETICS', 'INJECTABLES', 'INJECTION', 9000),
    ('OMEPRAZOLE', 'GASTROINTESTINAL', 'ORAL SOLIDS', 'CAPSULE', 35),
    ('ESOMEPRAZOLE', 'GASTROINTESTINAL', 'ORAL SOLIDS', 'TABLET', 120),
    ('RANITIDINE', 'GASTROINTESTINAL', 'ORAL SOLIDS', 'TABLET', 20),
    ('MAGNESIUM TRISILICATE', 'GASTROINTESTINAL', 'ORAL LIQUIDS', 'SUSPENSION', 400),
    ('METOCLOPRAMIDE', 'GASTROINTESTINAL', 'ORAL SOLIDS', 'TABLET', 15),
    ('LOPERAMIDE', 'GASTROINTESTINAL', 'ORAL SOLIDS', 'CAPSULE', 20),
    ('ORAL REHYDRATION SALTS', 'GASTROINTESTINAL', 'ORAL SOLIDS', 'SACHET', 100),
    ('HYOSCINE BUTYLBROMIDE', 'GASTROINTESTINAL', 'ORAL SOLIDS', 'TABLET', 40),
    ('ALBENDAZOLE', 'ANTHELMINTICS', 'ORAL SOLIDS', 'TABLET', 80),
    ('MEBENDAZOLE', 'ANTHELMINTICS', 'ORAL SOLIDS', 'TABLET', 50),
    ('PRAZIQUANTEL', 'ANTHELMINTICS', 'ORAL SOLIDS', 'TABLET', 150),
    ('CHLORPHENIRAMINE', 'ANTIHISTAMINES', 'ORAL SOLIDS', 'TABLET', 5),
    ('LORATADINE', 'ANTIHISTAMINES', 'ORAL SOLIDS', 'TABLET', 30),
    ('CETIRIZINE', 'ANTIHISTAMINES', 'ORAL SOLIDS', 'TABLET', 30),
    ('PROMETHAZINE', 'ANTIHISTAMINES', 'ORAL LIQUIDS', 'SYRUP', 350),
    ('SALBUTAMOL', 'RESPIRATORY', 'ORAL SOLIDS', 'TABLET', 10),
    ('SALBUTAMOL INHALER', 'RESPIRATORY', 'INHALERS', 'INHALER', 1800),
    ('BECLOMETASONE INHALER', 'RESPIRATORY', 'INHALERS', 'INHALER', 3500),
    ('AMINOPHYLLINE', 'RESPIRATORY', 'INJECTABLES', 'INJECTION', 200),
    ('PREDNISOLONE', 'STEROIDS', 'ORAL SOLIDS', 'TABLET', 10),
    ('DEXAMETHASONE', 'STEROIDS', 'INJECTABLES', 'INJECTION', 150),
    ('HYDROCORTISONE', 'STEROIDS', 'INJECTABLES', 'INJECTION', 600),
    ('FERROUS SULPHATE', 'HAEMATINICS', 'ORAL SOLIDS', 'TABLET', 5),
    ('FOLIC ACID', 'HAEMATINICS', 'ORAL SOLIDS', 'TABLET', 5),
    ('VITAMIN B COMPLEX', 'VITAMINS', 'ORAL SOLIDS', 'TABLET', 5),
    ('ASCORBIC ACID', 'VITAMINS', 'ORAL SOLIDS', 'TABLET', 5),
    ('MULTIVITAMIN', 'VITAMINS', 'ORAL LIQUIDS', 'SYRUP', 450),
    ('CALCIUM LACTATE', 'VITAMINS', 'ORAL SOLIDS', 'TABLET', 10),
    ('DIAZEPAM', 'CNS', 'ORAL SOLIDS', 'TABLET', 10),
    ('PHENOBARBITONE', 'CNS', 'ORAL SOLIDS', 'TABLET', 10),
    ('CARBAMAZEPINE', 'CNS', 'ORAL SOLIDS', 'TABLET', 40),
    ('AMITRIPTYLINE', 'CNS', 'ORAL SOLIDS', 'TABLET', 15),
    ('HALOPERIDOL', 'CNS', 'ORAL SOLIDS', 'TABLET', 25),
    ('FLUCONAZOLE', 'ANTIFUNGALS', 'ORAL SOLIDS', 'CAPSULE', 150),
    ('CLOTRIMAZOLE', 'ANTIFUNGALS', 'TOPICALS', 'CREAM', 350),
    ('GRISEOFULVIN', 'ANTIFUNGALS', 'ORAL SOLIDS', 'TABLET', 40),
    ('ACICLOVIR', 'ANTIVIRALS', 'ORAL SOLIDS', 'TABLET', 90),
    ('OXYTOCIN', 'OBSTETRICS', 'INJECTABLES', 'INJECTION', 300),
    ('MISOPROSTOL', 'OBSTETRICS', 'ORAL SOLIDS', 'TABLET', 250),
    ('NORMAL SALINE', 'INFUSIONS', 'INFUSIONS', 'INFUSION', 600)
), s(label, f) AS (VALUES
    ('LOW', 1), ('STANDARD', 2), ('MEDIUM', 3), ('HIGH', 4), ('FORTE', 5)
), p(label, f) AS (VALUES
    ('SINGLE', 1), ('X 10', 10), ('X 14', 14), ('X 20', 20), ('X 28', 28), ('X 100', 100)
)
SELECT g.name || ' ' || g.form || ' ' || s.label || ' (' || p.label || ')', g.cat, g.pharm,
       CASE WHEN g.price < 50 AND p.f = 1 THEN 'YES' ELSE 'NO' END,
       g.price * s.f * p.f
FROM g CROSS JOIN s CROSS JOIN p;

-- Investigations: each test on several specimens and turnarounds.
INSERT INTO LabServices (labName, labCatName, Capitated, Price)
WITH t(name, cat, price) AS (VALUES
    ('FULL BLOOD COUNT', 'HAEMATOLOGY', 2500), ('PACKED CELL VOLUME', 'HAEMATOLOGY', 800),
    ('ERYTHROCYTE SEDIMENTATION RATE', 'HAEMATOLOGY', 1000),
    ('BLOOD GROUP AND RHESUS', 'HAEMATOLOGY', 1500), ('GENOTYPE', 'HAEMATOLOGY', 2000),
    ('CLOTTING PROFILE', 'HAEMATOLOGY', 6000), ('RETICULOCYTE COUNT', 'HAEMATOLOGY', 1500),
    ('MALARIA PARASITE', 'PARASITOLOGY', 800), ('STOOL MICROSCOPY', 'PARASITOLOGY', 1000),
    ('URINALYSIS', 'CHEMISTRY', 800), ('FASTING BLOOD SUGAR', 'CHEMISTRY', 1000),
    ('RANDOM BLOOD SUGAR', 'CHEMISTRY', 800), ('HBA1C', 'CHEMISTRY', 7000),
    ('ELECTROLYTES UREA CREATININE', 'CHEMISTRY', 6000), ('LIVER FUNCTION TEST', 'CHEMISTRY', 7500),
    ('LIPID PROFILE', 'CHEMISTRY', 8000), ('SERUM URIC ACID', 'CHEMISTRY', 2500),
    ('THYROID FUNCTION TEST', 'ENDOCRINOLOGY', 15000), ('PROLACTIN', 'ENDOCRINOLOGY', 8000),
    ('PREGNANCY TEST', 'ENDOCRINOLOGY', 1000), ('PSA', 'ENDOCRINOLOGY', 9000),
    ('WIDAL TEST', 'SEROLOGY', 1500), ('HIV SCREENING', 'SEROLOGY', 2000),
    ('HEPATITIS B SURFACE ANTIGEN', 'SEROLOGY', 2000), ('HEPATITIS C ANTIBODY', 'SEROLOGY', 2500),
    ('VDRL', 'SEROLOGY', 1500), ('H. PYLORI ANTIBODY', 'SEROLOGY', 3000),
    ('URINE MCS', 'MICROBIOLOGY', 4000), ('BLOOD CULTURE', 'MICROBIOLOGY', 8000),
    ('HIGH VAGINAL SWAB MCS', 'MICROBIOLOGY', 4500), ('SPUTUM AFB', 'MICROBIOLOGY', 2500),
    ('WOUND SWAB MCS', 'MICROBIOLOGY', 4500), ('SEMEN ANALYSIS', 'MICROBIOLOGY', 5000),
    ('CHEST X-RAY', 'RADIOLOGY', 8000), ('ABDOMINAL ULTRASOUND', 'RADIOLOGY', 10000),
    ('OBSTETRIC ULTRASOUND', 'RADIOLOGY', 8000), ('PELVIC ULTRASOUND', 'RADIOLOGY', 8000),
    ('ECG', 'CARDIOLOGY', 7000), ('ECHOCARDIOGRAPHY', 'CARDIOLOGY', 35000),
    ('CT SCAN BRAIN', 'RADIOLOGY', 60000), ('MRI LUMBAR SPINE', 'RADIOLOGY', 120000)
), v(label, f) AS (VALUES
    ('ROUTINE', 1), ('URGENT', 1.5), ('REPEAT', 0.8), ('HOME SAMPLE', 1.8), ('PAEDIATRIC', 1.2),
    ('ANTE-NATAL', 0.9), ('REFERRED-IN', 1.1), ('STAFF', 0.5), ('NIGHT', 2), ('WEEKEND', 1.6),
    ('POST-OP', 1.3), ('SCREENING', 0.7), ('CORPORATE', 1.05), ('OUTREACH', 0.95)
)
SELECT t.name || ' - ' || v.label, t.cat, 'NO', t.price * v.f FROM t CROSS JOIN v;

INSERT INTO hServices (ServName, servCatName, Capitated, Price)
WITH b(name, cat, price) AS (VALUES
    ('GENERAL PRACTITIONER REVIEW', 'CONSULTATION', 3000),
    ('SPECIALIST CONSULTATION', 'CONSULTATION', 10000),
    ('CONSULTANT CONSULTATION', 'CONSULTATION', 15000), ('CARD RENEWAL', 'REGISTRATION', 1000),
    ('FAMILY FILE', 'REGISTRATION', 5000), ('WOUND DRESSING', 'NURSING', 1500),
    ('INJECTION ADMINISTRATION', 'NURSING', 500), ('IV CANNULATION', 'NURSING', 1500),
    ('CATHETERISATION', 'NURSING', 3000), ('NEBULISATION', 'NURSING', 2500),
    ('GENERAL WARD BED', 'WARD', 8000), ('PRIVATE ROOM BED', 'WARD', 20000),
    ('ICU BED', 'WARD', 60000), ('NURSING CARE PER DAY', 'WARD', 5000),
    ('MINOR SURGERY', 'THEATRE', 40000), ('MAJOR SURGERY', 'THEATRE', 250000),
    ('CAESAREAN SECTION', 'THEATRE', 350000), ('HERNIORRHAPHY', 'THEATRE', 180000),
    ('APPENDICECTOMY', 'THEATRE', 220000), ('ANAESTHESIA', 'THEATRE', 50000),
    ('SCALING AND POLISHING', 'DENTAL', 15000), ('TOOTH EXTRACTION', 'DENTAL', 10000),
    ('DENTAL FILLING', 'DENTAL', 20000), ('ROOT CANAL TREATMENT', 'DENTAL', 60000),
    ('EYE EXAMINATION', 'EYE', 5000), ('REFRACTION', 'EYE', 4000),
    ('CATARACT SURGERY', 'EYE', 150000), ('PHYSIOTHERAPY SESSION', 'PHYSIOTHERAPY', 6000),
    ('ANTE-NATAL BOOKING', 'MATERNITY', 25000), ('NORMAL DELIVERY', 'MATERNITY', 80000),
    ('IMMUNISATION', 'MATERNITY', 2000), ('EMERGENCY ROOM FEE', 'EMERGENCY', 10000),
    ('AMBULANCE SERVICE', 'EMERGENCY', 15000), ('RESUSCITATION', 'EMERGENCY', 30000)
), v(label, f) AS (VALUES
    ('WEEKDAY', 1), ('WEEKEND', 1.5), ('PUBLIC HOLIDAY', 2), ('AFTER HOURS', 1.8),
    ('PAEDIATRIC', 0.8), ('ELDERLY', 0.9), ('STAFF', 0.5), ('VIP', 3), ('REPEAT', 0.7),
    ('HOME VISIT', 2.5)
)
SELECT b.name || ' (' || v.label || ')', b.cat, 'NO', b.price * v.f FROM b CROSS JOIN v;

-- Price lists. HYLOVA and the scheme keep their own lists; others follow them.
INSERT INTO DrugNHIS (drgName, drgCatName, Price, Company, CoyName, pharmCat, Remarks,
                      Capitated, tariffStatus)
SELECT drgName, drgCatName, Price, '0004', 'HYLOVA HMO', pharmCat, 'HMO', Capitated, 'FIXED'
FROM drugMaster;
INSERT INTO DrugNHIS (drgName, drgCatName, Price, Company, CoyName, pharmCat, Remarks,
                      Capitated, tariffStatus)
SELECT drgName, drgCatName, Price * 0.7, '0006', 'FEDERAL STAFF HEALTH INSURANCE SCHEME', pharmCat,
       'NHIS', Capitated, 'NEGOTIATE'
FROM drugMaster;
INSERT INTO DrugNHIS (drgName, drgCatName, Price, Company, CoyName, pharmCat, Remarks,
                      Capitated, tariffStatus)
SELECT drgName, drgCatName, Price * 0.9, '0005', 'AXEL MANDRELL HEALTH', pharmCat, 'HMO',
       Capitated, tariffStatus
FROM DrugNHIS WHERE Company = '0004';
INSERT INTO DrugNHIS (drgName, drgCatName, Price, Company, CoyName, pharmCat, Remarks,
                      Capitated, tariffStatus)
SELECT drgName, drgCatName, Price * 0.85, '0008', 'RELMONT HMO', pharmCat, 'HMO',
       Capitated, tariffStatus
FROM DrugNHIS WHERE Company = '0004';
INSERT INTO DrugNHIS (drgName, drgCatName, Price, Company, CoyName, pharmCat, Remarks,
                      Capitated, tariffStatus)
SELECT drgName, drgCatName, Price * 1.2, '0011', 'FIRSTLINE BANKING PLC', pharmCat,
       'COMPANY', Capitated, tariffStatus
FROM DrugNHIS WHERE Company = '0004';

INSERT INTO LabServiceNHIS (labName, labCatName, Price, Company, CoyName, Remarks, Capitated,
                            tariffStatus)
SELECT labName, labCatName, Price, '0004', 'HYLOVA HMO', 'HMO', Capitated, 'FIXED'
FROM LabServices;
INSERT INTO LabServiceNHIS (labName, labCatName, Price, Company, CoyName, Remarks, Capitated,
                            tariffStatus)
SELECT labName, labCatName, Price * 0.85, '0005', 'AXEL MANDRELL HEALTH', 'HMO', Capitated,
       tariffStatus
FROM LabServiceNHIS WHERE Company = '0004';

INSERT INTO hServiceNHIS (ServName, servCatName, Price, Company, CoyName, Remarks, Capitated,
                          tariffStatus)
SELECT ServName, servCatName, Price, '0001', 'PRIVATE PATIENTS', 'PRIVATE', Capitated, 'FIXED'
FROM hServices;
INSERT INTO hServiceNHIS (ServName, servCatName, Price, Company, CoyName, Remarks, Capitated,
                          tariffStatus)
SELECT ServName, servCatName, Price * 0.8, '0004', 'HYLOVA HMO', 'HMO', Capitated,
       tariffStatus
FROM hServiceNHIS WHERE Company = '0001';

INSERT INTO DrugNHISListEntered (CoyID, Type, remarks, useTariff, Pcent) VALUES
    ('0004', 'DRUG', 'HMO', '0004', 1),
    ('0006', 'DRUG', 'NHIS', '0006', 1),
    ('0005', 'DRUG', 'HMO', '0004', 0.9),
    ('0008', 'DRUG', 'HMO', '0004', 0.85),
    ('0011', 'DRUG', 'COMPANY', '0004', 1.2),
    ('0004', 'LAB', 'HMO', '0004', 1),
    ('0005', 'LAB', 'HMO', '0004', 0.85),
    ('0001', 'SERVICE', 'PRIVATE', '0001', 1),
    ('0004', 'SERVICE', 'HMO', '0001', 0.8);

--@db Accounting

INSERT INTO ChartOfAccountMaster (AccountID, CoyID, CreatedBy) VALUES
    ('11000001', '0001', 'demo'), ('11000002', '0001', 'demo'), ('12000001', '0001', 'demo'),
    ('12000002', '0001', 'demo'), ('12000003', '0001', 'demo'), ('12000004', '0001', 'demo'),
    ('12000005', '0001', 'demo'), ('12900001', '0001', 'demo'), ('41000001', '0001', 'demo');

INSERT INTO ChartOfAccounts (AccountID, AccountName, groupID, AccountOpAmt, AccountClAmt,
                             AccountCat, AccountDesc, AccountAddress, Period, CoyID, UserName,
                             ExtID, ExtIDType) VALUES
    ('11000001', 'CASH IN HAND', '1100', 50000, 50000, 'CASH', 'CASH', '', 'JAN 2026',
     '0001', 'demo', '', ''),
    ('11000002', 'ZENITH BANK CURRENT ACCOUNT', '1100', 2500000, 2500000, 'BANK', 'BANK', '',
     'JAN 2026', '0001', 'demo', '', ''),
    ('12000001', 'DANBURY FLOUR MILLS', '1200', 0, 0, 'CORPORATE', 'CLIENT',
     '1 ALFRED REWANE RD, IKOYI', 'JAN 2026', '0001', 'demo', '0002', 'RECEIVABLE'),
    ('12000002', 'HYLOVA HMO', '1200', 0, 0, 'HMO', 'CLIENT', 'LEKKI PHASE 1', 'JAN 2026',
     '0001', 'demo', '0004', 'RECEIVABLE'),
    ('12000003', 'RELMONT HMO', '1200', 0, 0, 'HMO', 'CLIENT', '23 ADEOLA ODEKU, VI',
     'FEB 2026', '0001', 'demo', '0008', 'RECEIVABLE'),
    ('12000004', 'LEAMORE HEALTH', '1200', 0, 0, 'HMO', 'CLIENT', '121 IKORODU ROAD, ONIPANU',
     'FEB 2026', '0001', 'demo', '0009', 'RECEIVABLE'),
    ('12000005', 'FIRSTLINE BANKING PLC', '1200', 0, 0, 'CORPORATE', 'CLIENT',
     '35 MARINA, LAGOS ISLAND', 'MAR 2026', '0001', 'demo', '0011', 'RECEIVABLE'),
    ('12900001', 'PROVISION FOR DOUBTFUL DEBTS', '1290', 0, 0, 'PROVISION', 'PROVISION', '',
     'JAN 2026', '0001', 'demo', '', ''),
    ('41000001', 'CONSULTATION INCOME', '4100', 0, 0, 'INCOME', 'INCOME', '', 'JAN 2026',
     '0001', 'demo', '', '');
