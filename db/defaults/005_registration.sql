-- Every installation: the days of the week the clinics' timetables name.
--@db HOSPITAL

INSERT INTO Weekdays (SNo, WkDay) VALUES
    (1, 'SUNDAY'), (2, 'MONDAY'), (3, 'TUESDAY'), (4, 'WEDNESDAY'), (5, 'THURSDAY'),
    (6, 'FRIDAY'), (7, 'SATURDAY');
