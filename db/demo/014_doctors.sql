-- Demo attendance items the desk counts.
--@db HOSPITAL

INSERT INTO hrecordsMonitor (Description, dtDate, numCount, Remarks) VALUES
    ('WALK-IN', '2026-01-05', 0, 'SEED'),
    ('EMERGENCY', '2026-01-05', 0, 'SEED'),
    ('FOLLOW-UP', '2026-01-05', 0, 'SEED');
