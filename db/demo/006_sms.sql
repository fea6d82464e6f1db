-- The SMS center of the demo: message categories with their wording, groups of
-- recipients, a little credit, and the demo officer allowed to send special messages.
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

INSERT INTO SmsAccount (CatName, CurrBalance) VALUES
    ('ATTEND', 1250), ('APPT', 840), ('DOB_PAT', 300), ('PROMO', 75);

INSERT INTO UsersForSMS (username) VALUES ('demo');

INSERT INTO smsClinicDesignation (ClinicName, Designation) VALUES
    ('GOPD', 'Medical Officer'), ('PAEDIATRICS', 'Paediatrician'),
    ('ANTE-NATAL', 'Obstetrician'), ('EYE', 'Ophthalmologist'), ('DENTAL', 'Dentist');
