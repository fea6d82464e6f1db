#pragma once
// The identifiers of a patient and the rules of the three category axes: payer, billing
// category and membership. Pure functions: the screens and saves call them.

#include <QDate>
#include <QString>
#include <QStringList>

namespace tolmar::patients {

// System No: four characters of prefix, then digits to the end.
bool isPnoValid(const QString& pno);

// Names are stored without "[" and "]" (they delimit keys in list entries), trimmed.
QString cleanName(const QString& name);

// The card number stored for a new patient. With AUTO_CARD_NO "YES":
// "{hospID}/{yy}/{last 6 characters of PNo}"; otherwise what the user typed, trimmed.
QString cardNumber(const QString& autoCardNo, const QString& hospID, const QDate& serverDate,
                   const QString& pno, const QString& typed);
// What the screen shows while the number is still to be generated: "{yy}/{last 5 of PNo}".
QString cardNumberPreview(const QDate& serverDate, const QString& pno);

// The longest payer code the registration screen accepts.
inline constexpr int kMaxRetainIdLength = 7;

// Fields that choosing a payer sets. For the private client they are preset; for any other
// payer they are blanked and the user must fill them.
struct PayerPreset {
    QString cardDuration;   // fileduration
    QString billingCategory;
    QString enrolleeNo;     // empno
    QString plan;           // policyType
    QString feeForService;  // ref
    QString hmoReferral;    // HmoRef
    QString cardType;
    bool clearsExpiry = false;
};
PayerPreset payerPreset(const QString& retainID, const QString& privateRetainID);
bool isPrivatePayer(const QString& retainID, const QString& privateRetainID);

// Billing categories with rules of their own.
bool isInsuranceCategory(const QString& clientCatID);  // HMO, NHIS, PHIS
bool needsEnrolleeNo(const QString& clientCatID);
bool opensPlanList(const QString& clientCatID);
bool needsAdmissionLimit(const QString& clientCatID, const QString& admissionLimitExists);
bool storesExpiryDate(const QString& clientCatID);  // PRIVATE alone
// The client type recorded on the patient: the category's, "COMPANY" when it has none.
QString coyTypeOf(const QString& categoryClientType);

// Membership.
inline const QString kPrincipal = QStringLiteral("PRINCIPAL");
inline const QString kDependant = QStringLiteral("DEPENDANT");
bool mayHaveDependants(const QString& pCatID);

// Fixed lists of the record.
const QStringList& titles();
const QStringList& bloodGroups();
const QStringList& genotypes();
const QStringList& religions();
const QStringList& relations();
const QStringList& maturities();
const QStringList& cardDurations();

}  // namespace tolmar::patients
