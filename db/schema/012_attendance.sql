-- The desk's list of today's visits is read newest first on every refresh: with the visit's
-- key beside its date in one index, a busy day's rows come in that order without a sort,
-- and the list shows its first page at once.
--@db HOSPITAL

DROP INDEX ix_hrecords_recdate;
CREATE INDEX ix_hrecords_recdate ON hRecords (recDate, recID);

-- How many visits today has, for the list's caption: counted off that index alone, without
-- the patient and payer each row of the list joins.
DROP VIEW IF EXISTS qryhVisitsForTodayCount;
CREATE VIEW qryhVisitsForTodayCount AS
SELECT COUNT(*) AS Visits FROM hRecords WHERE recDate = $TODAY;
