-- The accounts of the suite as this module keeps them: a modern password hash beside the
-- suite's transformed password, the name `Users` that the password change and the account
-- deletion work through, the branches an account belongs to, the doctors among the users
-- and the pairs of users and roles with their details. Every statement may run again over
-- itself, as the step does when it is found recorded as missing.
--@db HOSPITAL

-- An Argon2id hash of the password (libsodium's text form). The suite's other modules read
-- Password; this column lets the weak one go one day without anyone retyping a password.
ALTER TABLE ApplicationUsers ADD COLUMN IF NOT EXISTS PassHash VARCHAR(255);

-- Who holds a role is asked by user name at every start and for every rights check.
CREATE INDEX IF NOT EXISTS ix_userroles_username ON UserRoles (Username);

CREATE TABLE IF NOT EXISTS LagosBranches (
    BranchCode VARCHAR(50) NOT NULL PRIMARY KEY
);

DROP VIEW IF EXISTS qryUserRole;
DROP VIEW IF EXISTS vwUsersDoctor;
DROP VIEW IF EXISTS Users;

-- The same accounts under the name the suite's password change uses. Every column of
-- ApplicationUsers, in its order, so that a copy of a row ("select * from Users") keeps
-- them all. PostgreSQL updates and deletes through a view this simple by itself.
CREATE VIEW Users AS
SELECT Username, Fullname, Password, SaltedPass, AccountStatus, BranchCode, EmpID, hospID,
       PassHash
FROM ApplicationUsers;

-- Doctors are the users who hold CONSULTING, whatever the case it was typed in.
CREATE VIEW vwUsersDoctor AS
SELECT Username, Fullname, empID, hospID, HName, LoginRole, Password, AccountStatus,
       BranchCode
FROM vwUsers
WHERE upper(LoginRole) = 'CONSULTING';

-- The pairs of users and roles, with what a list of a role's users shows beside each name.
CREATE VIEW qryUserRole AS
SELECT ur.RoleID, r.LoginRole, ur.Username, u.Fullname, u.AccountStatus, u.BranchCode
FROM UserRoles ur
JOIN Roles r ON r.RoleID = ur.RoleID
LEFT JOIN ApplicationUsers u ON u.Username = ur.Username;

--@only sqlite
-- SQLite writes through a view only by triggers (gone with the view when it is made again).
-- It does not count the rows such a trigger changes: a statement on Users reports none, so
-- a caller that must know reads the table afterwards.
CREATE TRIGGER Users_update INSTEAD OF UPDATE ON Users
BEGIN
    UPDATE ApplicationUsers
    SET Username = NEW.Username, Fullname = NEW.Fullname, Password = NEW.Password,
        SaltedPass = NEW.SaltedPass, AccountStatus = NEW.AccountStatus,
        BranchCode = NEW.BranchCode, EmpID = NEW.EmpID, hospID = NEW.hospID,
        PassHash = NEW.PassHash
    WHERE Username = OLD.Username;
END;

CREATE TRIGGER Users_delete INSTEAD OF DELETE ON Users
BEGIN
    DELETE FROM ApplicationUsers WHERE Username = OLD.Username;
END;

CREATE TRIGGER Users_insert INSTEAD OF INSERT ON Users
BEGIN
    INSERT INTO ApplicationUsers (Username, Fullname, Password, SaltedPass, AccountStatus,
                                  BranchCode, EmpID, hospID, PassHash)
    VALUES (NEW.Username, NEW.Fullname, NEW.Password, NEW.SaltedPass,
            COALESCE(NEW.AccountStatus, 'Enabled'), NEW.BranchCode, NEW.EmpID, NEW.hospID,
            NEW.PassHash);
END;
