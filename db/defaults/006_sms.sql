-- Every installation: the SMS message categories with their wording and the groups of
-- recipients a special message can go to.
--@db SmsCenter

INSERT INTO MessageCategory (CatName, Details, Details2) VALUES
    ('ATTEND', 'Thank you for visiting us today. We wish you quick recovery.', ''),
    ('APPT', 'Please come with your hospital card.', ''),
    ('REMINDER', 'This is a reminder of your appointment tomorrow.', ''),
    ('DOB_EMP', 'Happy birthday from all of us.', ''),
    ('DOB_PAT', 'Happy birthday! Wishing you good health.', ''),
    ('PROMO', '', '');

INSERT INTO PeopleCategory (CatName, Remarks, RemarksCount) VALUES
    ('ALL PATIENTS WITH A PHONE NUMBER',
     'SELECT COALESCE(Title || '' '', '''') || psurname || '' '' || pfirstName AS FullName, '
     || '''Dear '' || COALESCE(Title || '' '', '''') || psurname || '','' AS FullName2, '
     || 'pPhoneNo AS PhoneNo, PNo AS SNo FROM hPatients '
     || 'WHERE pPhoneNo IS NOT NULL AND pPhoneNo <> '''' ORDER BY psurname, pfirstName',
     'SELECT count(*) AS TotalNum FROM hPatients WHERE pPhoneNo IS NOT NULL AND pPhoneNo <> '''''),
    ('PATIENTS WITH BIRTHDAY TODAY',
     'SELECT Fullname AS FullName, ''Dear '' || Fullname || '','' AS FullName2, '
     || 'Phone AS PhoneNo, PNo AS SNo FROM vwBirthday ORDER BY Fullname',
     'SELECT count(*) AS TotalNum FROM vwBirthday'),
    ('HMO ENROLLEES',
     'SELECT COALESCE(Title || '' '', '''') || psurname || '' '' || pfirstName AS FullName, '
     || '''Dear '' || COALESCE(Title || '' '', '''') || psurname || '','' AS FullName2, '
     || 'pPhoneNo AS PhoneNo, PNo AS SNo FROM hPatients WHERE clientCatID = ''HMO'' '
     || 'ORDER BY psurname, pfirstName',
     'SELECT count(*) AS TotalNum FROM hPatients WHERE clientCatID = ''HMO''');
