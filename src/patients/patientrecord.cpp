#include "patients/patientrecord.h"

#include "core/listentry.h"

namespace tolmar::patients {

bool isPnoValid(const QString& pno)
{
    const QString tail = pno.mid(4);
    if (tail.isEmpty())
        return false;
    for (QChar c : tail)
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
    return true;
}

QString cleanName(const QString& name) { return listentry::stripBrackets(name); }

QString cardNumber(const QString& autoCardNo, const QString& hospID, const QDate& serverDate,
                   const QString& pno, const QString& typed)
{
    if (autoCardNo != QLatin1String("YES"))
        return typed.trimmed();
    return QStringLiteral("%1/%2/%3")
        .arg(hospID, serverDate.toString(QStringLiteral("yy")), pno.right(6));
}

QString cardNumberPreview(const QDate& serverDate, const QString& pno)
{
    return serverDate.toString(QStringLiteral("yy")) + QLatin1Char('/') + pno.right(5);
}

bool isPrivatePayer(const QString& retainID, const QString& privateRetainID)
{
    return !retainID.isEmpty() && retainID.trimmed() == privateRetainID.trimmed();
}

PayerPreset payerPreset(const QString& retainID, const QString& privateRetainID)
{
    if (isPrivatePayer(retainID, privateRetainID))
        return {QStringLiteral("ONE YEAR"), QStringLiteral("PRIVATE"), QStringLiteral("NIL"),
                QStringLiteral("NIL"),      QStringLiteral("YES"),     QStringLiteral("NO"),
                QStringLiteral("SINGLE"),   false};
    PayerPreset blank;
    blank.clearsExpiry = true;
    return blank;
}

bool isInsuranceCategory(const QString& c)
{
    return c == QLatin1String("HMO") || c == QLatin1String("NHIS") || c == QLatin1String("PHIS");
}

bool needsEnrolleeNo(const QString& c) { return isInsuranceCategory(c); }
bool opensPlanList(const QString& c) { return isInsuranceCategory(c); }

bool needsAdmissionLimit(const QString& c, const QString& admissionLimitExists)
{
    return isInsuranceCategory(c) && admissionLimitExists == QLatin1String("YES");
}

bool storesExpiryDate(const QString& c) { return c == QLatin1String("PRIVATE"); }

QString coyTypeOf(const QString& categoryClientType)
{
    return categoryClientType.trimmed().isEmpty() ? QStringLiteral("COMPANY") : categoryClientType;
}

bool mayHaveDependants(const QString& pCatID) { return pCatID != kDependant; }

const QStringList& titles()
{
    static const QStringList l{"MR",    "MRS",    "MISS",   "MASTER", "DR",
                               "PROF",  "ALHAJI", "ALHAJA", "PASTOR", "CHIEF"};
    return l;
}
const QStringList& bloodGroups()
{
    static const QStringList l{"O-NEGATIVE", "O-POSITIVE", "A-NEGATIVE",  "A-POSITIVE",
                               "B-NEGATIVE", "B-POSITIVE", "AB-NEGATIVE", "AB-POSITIVE"};
    return l;
}
const QStringList& genotypes()
{
    static const QStringList l{"AA", "AS", "SS", "AC"};
    return l;
}
const QStringList& religions()
{
    static const QStringList l{"CHRISTIANITY", "ISLAM", "OTHERS"};
    return l;
}
const QStringList& relations()
{
    static const QStringList l{"FATHER", "MOTHER", "UNCLE", "AUNT", "BROTHER", "SISTER", "COUSIN",
                               "NIECE",  "WIFE",   "HUSBAND", "SON", "DAUGHTER", "OTHERS"};
    return l;
}
const QStringList& maturities()
{
    static const QStringList l{"ADULT", "ADOLESCENT", "CHILD", "NEONATE"};
    return l;
}
const QStringList& cardDurations()
{
    static const QStringList l{"WHILE STILL IN SERVICE", "ONE YEAR", "TILL END OF YEAR"};
    return l;
}

}  // namespace tolmar::patients
