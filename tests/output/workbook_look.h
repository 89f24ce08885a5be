// A workbook as LibreOffice finds it: what stands where, with the styles written out instead of their names.
#pragma once

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QStringList>

/// Reads what LibreOffice has saved as flat XML (.fods).
class WorkbookLook
{
public:
    explicit WorkbookLook(const QString &flatFile)
    {
        QFile file(flatFile);
        QDomDocument document;
        if (!file.open(QFile::ReadOnly) || !document.setContent(&file))
            return;
        for (const char *part : {"office:styles", "office:automatic-styles", "office:master-styles"}) {
            for (const QDomElement &style :
                 children(document.documentElement().firstChildElement(QLatin1String(part)))) {
                if (style.tagName() != QLatin1String("style:default-style")) {
                    m_styles[style.attribute(QStringLiteral("style:name"))] = style;
                } else if (style.attribute(QStringLiteral("style:family")) == QLatin1String("table-cell")) {
                    m_styles[kUnnamed] = style;
                }
            }
        }
        const QDomElement body = document.documentElement()
                                     .firstChildElement(QStringLiteral("office:body"))
                                     .firstChildElement(QStringLiteral("office:spreadsheet"));
        for (const QDomElement &part : children(body)) {
            if (part.tagName() == QLatin1String("table:table")) {
                readSheet(part);
            } else {
                m_all[part.tagName()] = written(part);
            }
        }
    }

    /// Everything but widths. "Ord!C2 value", "Ord!C2 formula", "Ord!C2 look" (number format, font, borders,
    /// merging, notes), "Ord!2 row", "Ord!C column", "Ord" (page set-up), "Ord table:shapes" (pictures), ...
    [[nodiscard]] const QMap<QString, QString> &all() const { return m_all; }
    /// Of each column, in inches.
    [[nodiscard]] const QMap<QString, double> &widths() const { return m_widths; }

private:
    static constexpr int kEndless =
        100; ///< a longer repetition is the empty rest of the sheet, which counts once
    static inline const QString kUnnamed = QStringLiteral("(of every cell)");

    static QList<QDomElement> children(const QDomElement &parent)
    {
        QList<QDomElement> all;
        for (QDomElement child = parent.firstChildElement(); !child.isNull();
             child = child.nextSiblingElement())
            all << child;
        return all;
    }

    static int repetition(const QDomElement &element, const char *attribute)
    {
        return element.attribute(QLatin1String(attribute), QStringLiteral("1")).toInt();
    }

    static QString columnName(int column)
    {
        return column < 26 ? QString(QChar('A' + column))
                           : columnName(column / 26 - 1) + QChar('A' + column % 26);
    }

    /// A picture moves a little with the columns.
    static QString rounded(const QString &value)
    {
        bool isNumber = false;
        const double inches = value.endsWith(QLatin1String("in")) ? value.chopped(2).toDouble(&isNumber) : 0;
        return isNumber ? QString::number(inches, 'f', 2) : value;
    }

    /// A cell's own style with those that it builds on: which of them says what does not matter.
    [[nodiscard]] QMap<QString, QString> cellLook(const QString &styleName) const
    {
        const QDomElement style = m_styles[styleName];
        const QString parent = style.attribute(QStringLiteral("style:parent-style-name"), kUnnamed);
        QMap<QString, QString> look = styleName == kUnnamed ? QMap<QString, QString>() : cellLook(parent);
        const QDomElement format = m_styles[style.attribute(QStringLiteral("style:data-style-name"))];
        if (!format.isNull())
            look[QStringLiteral("format")] = written(format);
        for (const QDomElement &properties : children(style)) {
            for (int i = 0; i < properties.attributes().count(); ++i) {
                const QDomAttr attribute = properties.attributes().item(i).toAttr();
                const QString key = properties.tagName() + QLatin1Char(' ') + attribute.name();
                // What goes without saying is said in some files, in others not.
                static const QStringList plain = {QStringLiteral("normal"), QStringLiteral("none"),
                                                  QStringLiteral("text-outline=false"),
                                                  QStringLiteral("use-window-font-color=true")};
                const QString what =
                    attribute.name().section(QLatin1Char(':'), 1) + QLatin1Char('=') + attribute.value();
                if (plain.contains(attribute.value()) || plain.contains(what)) {
                    look.remove(key);
                } else {
                    look[key] = rounded(attribute.value());
                }
            }
        }
        return look;
    }

    [[nodiscard]] QString written(const QDomElement &element, const QStringList &leftOut = {}) const
    {
        QMap<QString, QString> attributes;
        for (int i = 0; i < element.attributes().count(); ++i) {
            const QDomAttr attribute = element.attributes().item(i).toAttr();
            const QString name = attribute.name();
            const bool refers = name.endsWith(QLatin1String("style-name")) ||
                                name.endsWith(QLatin1String("page-layout-name")) ||
                                name.endsWith(QLatin1String("master-page-name"));
            if (name != QLatin1String("style:name") && name != QLatin1String("table:range-usable-as") &&
                !leftOut.contains(name)) {
                attributes[name] = refers && m_styles.contains(attribute.value())
                                       ? written(m_styles[attribute.value()])
                                       : rounded(attribute.value());
            }
        }
        QString text = element.tagName() + QLatin1Char('(');
        for (auto at = attributes.cbegin(); at != attributes.cend(); ++at)
            text += at.key() + QLatin1Char('=') + at.value() + QLatin1Char(' ');
        text += QLatin1Char(')');
        for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling()) {
            if (!leftOut.contains(child.nodeName()))
                text += child.isElement() ? written(child.toElement()) : child.nodeValue().simplified();
        }
        return text;
    }

    void readSheet(const QDomElement &sheet)
    {
        m_sheet = sheet.attribute(QStringLiteral("table:name"));
        m_row = 0;
        m_columnLooks.clear();
        QStringList parts;
        for (const QDomElement &part : children(sheet))
            parts << part.tagName();
        m_all[m_sheet] = written(sheet, parts);
        for (const QDomElement &part : children(sheet))
            readPart(part, QString());
    }

    /// Columns and rows may stand in groups, which are the repeated ones or the folded ones.
    void readPart(const QDomElement &part, const QString &group)
    {
        const QString kind = part.tagName();
        if (kind == QLatin1String("table:table-column")) {
            readColumn(part, group);
        } else if (kind == QLatin1String("table:table-row")) {
            const int times = repetition(part, "table:number-rows-repeated");
            for (int i = 0; i < (times < kEndless ? times : 1); ++i)
                readRow(part, group);
        } else if (part.firstChildElement().tagName().startsWith(QLatin1String("table:table-"))) {
            for (const QDomElement &child : children(part))
                readPart(child, group + kind);
        } else {
            m_all[m_sheet + QLatin1Char(' ') + kind] = written(part);
        }
    }

    void readColumn(const QDomElement &column, const QString &group)
    {
        const QString width = QStringLiteral("style:column-width");
        const QDomElement style = m_styles[column.attribute(QStringLiteral("table:style-name"))];
        const QDomElement properties =
            style.firstChildElement(QStringLiteral("style:table-column-properties"));
        const int times = repetition(column, "table:number-columns-repeated");
        for (int i = 0; i < (times < kEndless ? times : 1); ++i) {
            const QString place = m_sheet + QLatin1Char('!') + columnName(int(m_columnLooks.size()));
            m_columnLooks << column.attribute(QStringLiteral("table:default-cell-style-name"));
            m_widths[place] = properties.attribute(width).chopped(2).toDouble();
            m_all[place + QStringLiteral(" column")] =
                group + column.attribute(QStringLiteral("table:visibility")) + written(properties, {width});
        }
    }

    void readRow(const QDomElement &row, const QString &group)
    {
        ++m_row;
        m_all[QStringLiteral("%1!%2 row").arg(m_sheet).arg(m_row)] =
            group + written(m_styles[row.attribute(QStringLiteral("table:style-name"))]);
        int column = 0;
        for (const QDomElement &cell : children(row)) {
            const int times = repetition(cell, "table:number-columns-repeated");
            for (int i = 0; i < (times < kEndless ? times : 1); ++i)
                readCell(cell, column++);
        }
    }

    void readCell(const QDomElement &cell, int column)
    {
        const QString place = QStringLiteral("%1!%2%3 ").arg(m_sheet, columnName(column)).arg(m_row);
        const QString style = QStringLiteral("table:style-name");
        QString &look = m_cellLooks[cell.attribute(style, m_columnLooks.value(column))];
        if (look.isEmpty()) {
            const QMap<QString, QString> looks = cellLook(cell.attribute(style, m_columnLooks.value(column)));
            for (auto at = looks.cbegin(); at != looks.cend(); ++at)
                look += at.key() + QLatin1Char('=') + at.value() + QLatin1Char(' ');
        }
        const QStringList values = {QStringLiteral("office:value"), QStringLiteral("office:value-type"),
                                    QStringLiteral("calcext:value-type"), QStringLiteral("text:p")};
        m_all[place + QStringLiteral("look")] =
            look + written(cell, values + QStringList({style, QStringLiteral("table:formula"),
                                                       QStringLiteral("office:string-value"),
                                                       QStringLiteral("table:number-columns-repeated")}));
        m_all[place + QStringLiteral("formula")] = cell.attribute(QStringLiteral("table:formula"));
        m_all[place + QStringLiteral("value")] =
            cell.attribute(values[0], cell.firstChildElement(QStringLiteral("text:p")).text());
    }

    QMap<QString, QDomElement> m_styles;
    QMap<QString, QString> m_cellLooks; ///< by the style's name
    QMap<QString, QString> m_all;
    QMap<QString, double> m_widths;
    QString m_sheet;
    int m_row = 0;
    QStringList m_columnLooks; ///< the style that a cell of the column has when it names none
};
