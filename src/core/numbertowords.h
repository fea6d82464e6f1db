#pragma once
// Amounts in words for price fields and receipts: 21.5 reads "Twenty One Naria and Fifty
// kobo only". The spellings ("Fourty", "Naria") are the ones the hospital's papers have
// always carried, so they stay.

#include <QString>

namespace tolmar {

class figToWrd {
public:
    enum CaseStyle { AsBuilt = 0, UpperCase = 1, LowerCase = 2 };
    enum Padding { NoPadding = 0, OneStar = 1, ThreeStars = 2 };
    enum Delimiter { CommaSpace = 0, Space = 1, Dash = 2 };

    int UseCase = AsBuilt;
    int UsePadding = NoPadding;
    int UseDelimiter = CommaSpace;

    // A non-negative amount in words; "***" from 999,999,999,999.99 up.
    QString Num2String(double amount) const;
};

}  // namespace tolmar
