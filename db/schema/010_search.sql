-- Finding a patient among a million as the name is typed. Names are matched on a folded
-- copy of "surname firstname" (capitals, accents dropped) that the program writes: SQLite's
-- upper() and LIKE fold ASCII only, and both backends must find "Öztürk" from "ozturk".
-- The folded copy and the telephone number carry trigram indexes, so that a part of a name
-- anywhere in it is an index lookup. The database clears the folded copy when a name
-- changes without it, and the program folds it again before the next name search.
-- Every statement may run twice: a step whose record was lost is applied again.
--@db HOSPITAL

ALTER TABLE hPatients ADD COLUMN IF NOT EXISTS SearchName VARCHAR(260);
-- Deleting a patient archives the row as it stands, every column.
ALTER TABLE hpatientsArchive ADD COLUMN IF NOT EXISTS SearchName VARCHAR(260);

-- Likely duplicates of a new patient are looked for among those born the same day.
CREATE INDEX IF NOT EXISTS ix_hpatients_dob ON hPatients (DOB);

-- Search results come in folded-name order: a page of a common text is read off an index
-- in that order. On PostgreSQL the index is on "SearchName || ''", so that the planner,
-- which cannot tell a rare bound text from a common one, never walks it for a plain
-- "SearchName LIKE ?" (a rare text would read it whole): that one goes to the trigrams.
--@postgres
CREATE INDEX IF NOT EXISTS ix_hpatients_searchname ON hPatients ((SearchName || ''), PNo);
CREATE INDEX IF NOT EXISTS ix_hpatients_unfolded ON hPatients (PNo) WHERE SearchName IS NULL;
CREATE EXTENSION IF NOT EXISTS pg_trgm SCHEMA public;
CREATE INDEX IF NOT EXISTS ix_hpatients_searchname_trgm ON hPatients USING gin (SearchName gin_trgm_ops);
CREATE INDEX IF NOT EXISTS ix_hpatients_phone_trgm ON hPatients USING gin (pPhoneNo gin_trgm_ops);

CREATE OR REPLACE FUNCTION hpatients_unfold() RETURNS trigger LANGUAGE plpgsql AS $$
BEGIN
    IF NEW.SearchName IS NOT DISTINCT FROM OLD.SearchName THEN
        NEW.SearchName := NULL;
    END IF;
    RETURN NEW;
END $$;
CREATE OR REPLACE TRIGGER tr_hpatients_unfold BEFORE UPDATE OF psurname, pfirstName ON hPatients
FOR EACH ROW WHEN (NEW.psurname IS DISTINCT FROM OLD.psurname
                   OR NEW.pfirstName IS DISTINCT FROM OLD.pfirstName)
EXECUTE FUNCTION hpatients_unfold();
--@sqlite
CREATE INDEX IF NOT EXISTS ix_hpatients_searchname ON hPatients (SearchName, PNo);
-- The trigram table keeps its own copy of the two searched columns, by the patient row's
-- rowid; the program never runs VACUUM, which could renumber those.
CREATE VIRTUAL TABLE IF NOT EXISTS hPatientsFts USING fts5(PNo UNINDEXED, SearchName, PhoneNo,
                                             tokenize = 'trigram');
INSERT INTO hPatientsFts (rowid, PNo, SearchName, PhoneNo)
SELECT rowid, PNo, SearchName, pPhoneNo FROM hPatients
WHERE rowid NOT IN (SELECT rowid FROM hPatientsFts);

CREATE TRIGGER IF NOT EXISTS tr_hpatientsfts_insert AFTER INSERT ON hPatients BEGIN
    INSERT INTO hPatientsFts (rowid, PNo, SearchName, PhoneNo)
    VALUES (new.rowid, new.PNo, new.SearchName, new.pPhoneNo);
END;
CREATE TRIGGER IF NOT EXISTS tr_hpatientsfts_delete AFTER DELETE ON hPatients BEGIN
    DELETE FROM hPatientsFts WHERE rowid = old.rowid;
END;
CREATE TRIGGER IF NOT EXISTS tr_hpatientsfts_update AFTER UPDATE OF PNo, SearchName, pPhoneNo ON hPatients
WHEN new.PNo IS NOT old.PNo OR new.SearchName IS NOT old.SearchName
     OR new.pPhoneNo IS NOT old.pPhoneNo
BEGIN
    UPDATE hPatientsFts SET PNo = new.PNo, SearchName = new.SearchName,
                            PhoneNo = new.pPhoneNo
    WHERE rowid = old.rowid;
END;
CREATE TRIGGER IF NOT EXISTS tr_hpatients_unfold AFTER UPDATE OF psurname, pfirstName ON hPatients
WHEN new.SearchName IS old.SearchName
     AND (new.psurname IS NOT old.psurname OR new.pfirstName IS NOT old.pfirstName)
BEGIN
    UPDATE hPatients SET SearchName = NULL WHERE rowid = new.rowid;
END;
--@end
