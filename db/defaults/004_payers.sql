-- Every installation: the receivable account group and the groups of the ledger, the
-- categories of services, and the two services a desk bills a private patient for
-- (PVT_REGFEE_SNO 1 and PVT_CONFEE_SNO 2): written before any other service.
--@db HOSPITAL

INSERT INTO AppDefaults (ID, IDVal) VALUES ('Acct_Receivable', '1200');

INSERT INTO HserviceCat (catName) VALUES
    ('CONSULTATION'), ('REGISTRATION'), ('NURSING'), ('WARD'), ('THEATRE'), ('DENTAL'),
    ('EYE'), ('PHYSIOTHERAPY'), ('MATERNITY'), ('EMERGENCY');

INSERT INTO hServices (ServName, servCatName, Capitated, Price) VALUES
    ('REGISTRATION', 'REGISTRATION', 'NO', 2000),
    ('CONSULTATION', 'CONSULTATION', 'NO', 5000);

--@db Accounting

INSERT INTO AccountGroups (GroupID, GroupName, GroupMin, GroupMax, isContra) VALUES
    ('1100', 'CASH AND BANK', 11000001, 11009999, 0),
    ('1200', 'TRADE RECEIVABLES', 12000001, 12009999, 0),
    ('1290', 'PROVISION FOR DOUBTFUL DEBTS', 12900001, 12909999, 1),
    ('2100', 'TRADE PAYABLES', 21000001, 21009999, 0),
    ('4100', 'INCOME FROM SERVICES', 41000001, 41009999, 0);
