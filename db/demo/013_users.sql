-- Demo installation: the branches and categories a new account is put under.
--@db HOSPITAL

INSERT INTO LagosBranches (BranchCode) VALUES
    ('(GENERAL)'), ('ADMINISTRATOR'), ('IKEJA'), ('LEKKI'), ('SURULERE'), ('YABA');
