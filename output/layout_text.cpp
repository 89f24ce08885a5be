#include "output/layout_text.h"

#include <algorithm>
#include <array>

namespace output {

namespace {

struct Provided
{
    const char *name;
    Piece::Kind kind;
};
constexpr std::array<Provided, 5> kProvided = {{{"SlNo", Piece::Kind::SlNo},
                                                {"Count", Piece::Kind::Count},
                                                {"PageNo", Piece::Kind::PageNo},
                                                {"PageCount", Piece::Kind::PageCount},
                                                {"Today", Piece::Kind::Today}}};

bool same(const QString &name, const char *known)
{
    return name.compare(QLatin1String(known), Qt::CaseInsensitive) == 0;
}

Piece bracedField(const QString &name)
{
    constexpr QLatin1String kSum("Sum:");
    if (name.startsWith(kSum, Qt::CaseInsensitive) && name.size() > kSum.size())
        return {Piece::Kind::Sum, name.mid(kSum.size()).trimmed()};
    for (const Provided &field : kProvided) {
        if (same(name, field.name))
            return {field.kind, {}};
    }
    if (std::any_of(kFormulas.begin(), kFormulas.end(), [&](const char *known) { return same(name, known); }))
        return {Piece::Kind::Formula, name.toLower()};
    throw LayoutMistake(QStringLiteral("there is no field {%1}").arg(name));
}

void addWords(TextLine &pieces, QChar character)
{
    if (pieces.empty() || pieces.back().kind != Piece::Kind::Words)
        pieces.push_back({Piece::Kind::Words, {}});
    pieces.back().text += character;
}

} // namespace

TextLine parseLayoutText(const QString &text)
{
    TextLine pieces;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar opening = text[at];
        if (opening != QLatin1Char('[') && opening != QLatin1Char('{')) {
            addWords(pieces, opening);
            continue;
        }
        if (at + 1 < text.size() && text[at + 1] == opening) {
            addWords(pieces, opening);
            ++at;
            continue;
        }
        const QChar closing = opening == QLatin1Char('[') ? QLatin1Char(']') : QLatin1Char('}');
        const qsizetype end = text.indexOf(closing, at);
        if (end < 0)
            throw LayoutMistake(QStringLiteral("\"%1\" lacks a %2").arg(text.mid(at), closing));
        const QString name = text.mid(at + 1, end - at - 1).trimmed();
        if (name.isEmpty())
            throw LayoutMistake(QStringLiteral("%1%2 names no field").arg(opening).arg(closing));
        if (opening == QLatin1Char('['))
            pieces.push_back({Piece::Kind::Column, name});
        else
            pieces.push_back(bracedField(name));
        at = end;
    }
    return pieces;
}

} // namespace output
