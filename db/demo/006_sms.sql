-- The SMS center of the demo: a little credit, the demo officer allowed to send special
-- messages, and the clinics' designations.
--@db SmsCenter

INSERT INTO SmsAccount (CatName, CurrBalance) VALUES
    ('ATTEND', 1250), ('APPT', 840), ('DOB_PAT', 300), ('PROMO', 75);

INSERT INTO UsersForSMS (username) VALUES ('demo');

INSERT INTO smsClinicDesignation (ClinicName, Designation) VALUES
    ('GOPD', 'Medical Officer'), ('PAEDIATRICS', 'Paediatrician'),
    ('ANTE-NATAL', 'Obstetrician'), ('EYE', 'Ophthalmologist'), ('DENTAL', 'Dentist');
