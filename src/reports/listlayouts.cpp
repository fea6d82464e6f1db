#include "reports/listlayouts.h"

#include "core/formats.h"

namespace tolmar::reports {

namespace {

using K = FieldKind;

std::vector<ListLayout> makeLayouts()
{
    const LayoutField date{QStringLiteral("RecDate"), QStringLiteral("Date"), 0.9, K::Date};
    std::vector<ListLayout> all;
    all.push_back({QStringLiteral("rptAttendance"), QStringLiteral("Patients Attendance"), true,
                   {date,
                    {QStringLiteral("Time"), QStringLiteral("Time"), 0.7, K::Time},
                    {QStringLiteral("OLdPNo"), QStringLiteral("Card No"), 1.1},
                    {QStringLiteral("FullName"), QStringLiteral("Patient Name"), 2.2},
                    {QStringLiteral("ClinicType"), QStringLiteral("Clinic"), 1.3},
                    {QStringLiteral("CoyName"), QStringLiteral("Company"), 1.8},
                    {QStringLiteral("EmpNo"), QStringLiteral("Enrollee No"), 1.0},
                    {QStringLiteral("pPhoneNo"), QStringLiteral("Phone No"), 1.0},
                    {QStringLiteral("Area"), QStringLiteral("Area"), 0.9},
                    {QStringLiteral("Username"), QStringLiteral("Taken By"), 0.8}},
                   {}});
    all.push_back({QStringLiteral("rptNewReg"), QStringLiteral("Patients Registration"), true,
                   {{QStringLiteral("RegDate"), QStringLiteral("Reg. Date"), 0.9, K::Date},
                    {QStringLiteral("PNo"), QStringLiteral("System No"), 1.1},
                    {QStringLiteral("oldpNo"), QStringLiteral("Card No"), 1.1},
                    {QStringLiteral("Fullname"), QStringLiteral("Patient Name"), 2.2},
                    {QStringLiteral("Sex"), QStringLiteral("Sex"), 0.6},
                    {QStringLiteral("CardType"), QStringLiteral("Card Type"), 0.7},
                    {QStringLiteral("retainName"), QStringLiteral("Company"), 1.8},
                    {QStringLiteral("clientCatID"), QStringLiteral("Billing Cat"), 0.9},
                    {QStringLiteral("empNo"), QStringLiteral("Enrollee No"), 1.0},
                    {QStringLiteral("pPhoneNo"), QStringLiteral("Phone No"), 1.0},
                    {QStringLiteral("username"), QStringLiteral("Registered By"), 0.9}},
                   {}});
    all.push_back({QStringLiteral("rptPatientAdmission"),
                   QStringLiteral("Patients Currently on Admission"), true,
                   {{QStringLiteral("AdmDate"), QStringLiteral("Adm. Date"), 0.9, K::Date},
                    {QStringLiteral("aTime"), QStringLiteral("Time"), 0.7, K::Time},
                    {QStringLiteral("fullname"), QStringLiteral("Patient Name"), 2.2},
                    {QStringLiteral("pno"), QStringLiteral("System No"), 1.1},
                    {QStringLiteral("consultID"), QStringLiteral("Consult No"), 1.1},
                    {QStringLiteral("Company"), QStringLiteral("Company"), 1.8},
                    {QStringLiteral("ClientCat"), QStringLiteral("Client Cat"), 0.8},
                    {QStringLiteral("wardID"), QStringLiteral("Ward"), 0.7},
                    {QStringLiteral("Reason"), QStringLiteral("Reason"), 1.5},
                    {QStringLiteral("ExtendAdmissionLimitTo"), QStringLiteral("Stay Limit"),
                     1.2, K::DateTime}},
                   {}});
    all.push_back({QStringLiteral("rptPatientDischarge"), QStringLiteral("Patients Discharged"),
                   true,
                   {{QStringLiteral("dischDate"), QStringLiteral("Date"), 0.9, K::Date},
                    {QStringLiteral("dischTime"), QStringLiteral("Time"), 0.7, K::Time},
                    {QStringLiteral("pno"), QStringLiteral("System No"), 1.1},
                    {QStringLiteral("fullname"), QStringLiteral("Patient Name"), 2.2},
                    {QStringLiteral("wardID"), QStringLiteral("Ward"), 0.7},
                    {QStringLiteral("reason"), QStringLiteral("Reason"), 1.5},
                    {QStringLiteral("remarks"), QStringLiteral("Remarks"), 1.5},
                    {QStringLiteral("StaffNo"), QStringLiteral("Discharged By"), 0.9},
                    {QStringLiteral("apptDate"), QStringLiteral("Next Appt"), 0.9, K::Date}},
                   {}});
    all.push_back({QStringLiteral("rptBillingIncome"), QStringLiteral("Income"), false,
                   {{QStringLiteral("receiptdate"), QStringLiteral("Date"), 0.9, K::Date},
                    {QStringLiteral("receiptNo"), QStringLiteral("Receipt No"), 1.0},
                    {QStringLiteral("billNo"), QStringLiteral("Bill No"), 1.0},
                    {QStringLiteral("Fullname"), QStringLiteral("Patient Name"), 2.0},
                    {QStringLiteral("Company"), QStringLiteral("Company"), 1.6},
                    {QStringLiteral("PayMode"), QStringLiteral("Pay Mode"), 0.8},
                    {QStringLiteral("Username"), QStringLiteral("Received By"), 0.9},
                    {QStringLiteral("AmountPaid"), QStringLiteral("Amount"), 1.0, K::Money}},
                   QStringLiteral("AmountPaid")});
    const std::vector<LayoutField> enrollees{
        {QStringLiteral("retainName"), QStringLiteral("HMO / Scheme"), 1.8},
        {QStringLiteral("Fullname"), QStringLiteral("Enrollee Name"), 2.2},
        {QStringLiteral("PNo"), QStringLiteral("System No"), 1.1},
        {QStringLiteral("oldpNo"), QStringLiteral("Card No"), 1.1},
        {QStringLiteral("empNo"), QStringLiteral("Enrollee No"), 1.0},
        {QStringLiteral("policyType"), QStringLiteral("Plan"), 1.0},
        {QStringLiteral("Sex"), QStringLiteral("Sex"), 0.6},
        {QStringLiteral("RegDate"), QStringLiteral("Reg. Date"), 0.9, K::Date},
        {QStringLiteral("pPhoneNo"), QStringLiteral("Phone No"), 1.0}};
    all.push_back({QStringLiteral("rptHMOList"), QStringLiteral("HMO & NHIS Enrollees"), true,
                   enrollees, {}});
    all.push_back({QStringLiteral("rptHMOList2"), QStringLiteral("HMO & NHIS Enrollees"), true,
                   enrollees, {}});
    // The consultation lists print what their panel's statement gives.
    const std::pair<const char*, const char*> consulting[] = {
        {"rptConsulting", "Consultation Details"},
        {"rptConsultingForCoy", "Consultation Details by Company"},
        {"rptConsultingForCoyPat", "Consultation Details by Company and Patient"},
        {"rptConsultingForCoyPatAdm", "Consultation Details of Admitted Patients"},
        {"rptConsultingForPat", "Consultation Details by Patient"},
        {"rptConsultingForPhy", "Consultation Details by Physician"},
        {"rptConsultingForCon", "Consultation Details by Consultation"},
        {"rptConsultingForDiag", "Consultation Details by Diagnosis"},
        {"rptConsultingForDiagHMO", "Consultation Details by Diagnosis (HMO)"},
        {"rptConsultingForDiagHMO2", "Consultation Details by Diagnosis (HMO) Summary"}};
    for (const auto& [name, title] : consulting)
        all.push_back({QString::fromLatin1(name), QString::fromLatin1(title), true, {}, {}});
    return all;
}

const std::vector<ListLayout>& layouts()
{
    static const std::vector<ListLayout> all = makeLayouts();
    return all;
}

QString printed(const QVariant& v, FieldKind kind)
{
    if (!v.isValid() || v.isNull())
        return QString();
    switch (kind) {
    case K::Date: {
        const QDate d = db::variantDate(v);
        return d.isValid() ? fmt::shortDate(d) : v.toString();
    }
    case K::DateTime: {
        const QDateTime t = db::variantDateTime(v);
        return t.isValid() ? fmt::shortDate(t.date()) + QLatin1Char(' ') + fmt::shortTime(t.time())
                           : v.toString();
    }
    case K::Money: return fmt::money(v.toDouble());
    case K::Time:
    case K::Number:
    case K::Text: break;
    }
    return db::variantText(v);
}

report::Align alignOf(FieldKind kind)
{
    return kind == K::Money || kind == K::Number ? report::Align::Right : report::Align::Left;
}

}  // namespace

const ListLayout* findListLayout(const QString& name)
{
    for (const ListLayout& l : layouts())
        if (l.name.compare(name, Qt::CaseInsensitive) == 0)
            return &l;
    return nullptr;
}

QStringList listLayoutNames()
{
    QStringList names;
    for (const ListLayout& l : layouts())
        names << l.name;
    return names;
}

report::ListDocument buildListDocument(const ListLayout& layout, const db::Result& rows,
                                       const QString& caption, const PrintContext& context)
{
    report::ListDocument doc;
    doc.heading = context.hospitalName;
    doc.title = layout.title;
    doc.caption = caption;
    doc.printedOn = fmt::shortDate(context.printedOn);
    doc.landscape = layout.landscape;

    // The printed fields and where each stands in the statement's columns.
    std::vector<std::pair<int, FieldKind>> picks;
    const db::Columns* columns = rows.columns.get();
    if (layout.fields.empty()) {
        for (int i = 0; columns && i < columns->count(); ++i) {
            doc.columns.push_back({columns->names().at(i), 1.0, report::Align::Left});
            picks.push_back({i, K::Text});
        }
    } else {
        for (const LayoutField& f : layout.fields) {
            const int i = columns ? columns->indexOf(f.name) : -1;
            if (i < 0)
                continue;
            doc.columns.push_back({f.caption, f.weight, alignOf(f.kind)});
            picks.push_back({i, f.kind});
        }
    }

    const int totalAt = layout.totalField.isEmpty() || !columns
                            ? -1
                            : columns->indexOf(layout.totalField);
    double total = 0;
    doc.rows.reserve(rows.size());
    for (const db::Row& row : rows.rows) {
        QStringList cells;
        cells.reserve(qsizetype(picks.size()));
        for (const auto& [index, kind] : picks)
            cells << printed(row.value(index), kind);
        doc.rows.push_back(std::move(cells));
        if (totalAt >= 0)
            total += row.value(totalAt).toDouble();
    }
    doc.summary = QStringLiteral("Number of records: %1").arg(rows.size());
    if (totalAt >= 0)
        doc.summary += QStringLiteral("      Total: %1").arg(fmt::money(total));
    return doc;
}

}  // namespace tolmar::reports
