#!/bin/sh
# Makes Ord.Xls (the export template) and branch-order.xls (an order to import) anew with LibreOffice.
# The results are checked in, so that the sample dealership is whole where LibreOffice is not installed.
set -eu
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
amount_rows=181 # two printed pages, and more would print as empty ones; the totals reach further
last_row=2000

head() {
    cat <<'END'
<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0" xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0" xmlns:number="urn:oasis:names:tc:opendocument:xmlns:datastyle:1.0"
 xmlns:fo="urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0" xmlns:of="urn:oasis:names:tc:opendocument:xmlns:of:1.2"
 office:version="1.3" office:mimetype="application/vnd.oasis.opendocument.spreadsheet">
<office:automatic-styles>
<number:text-style style:name="nText"><number:text-content/></number:text-style>
<number:number-style style:name="nQuantity"><number:number number:min-integer-digits="1" number:decimal-places="2"
 number:min-decimal-places="0" number:grouping="true"/></number:number-style>
<number:number-style style:name="nMoney"><number:number number:min-integer-digits="1" number:decimal-places="2"
 number:min-decimal-places="2" number:grouping="true"/></number:number-style>
END
    for column in Code:3.4 Name:9.4 Quantity:2.0 Rate:2.6 Amount:3.2 Gap:0.6 Caption:3.0 Total:3.6; do
        echo "<style:style style:name=\"w${column%:*}\" style:family=\"table-column\">" \
            "<style:table-column-properties style:column-width=\"${column#*:}cm\"/></style:style>"
    done
    cat <<'END'
<style:style style:name="rHead" style:family="table-row"><style:table-row-properties style:row-height="0.75cm"
 style:use-optimal-row-height="false"/></style:style>
<style:style style:name="rLine" style:family="table-row"><style:table-row-properties style:row-height="0.47cm"
 style:use-optimal-row-height="false"/></style:style>
<style:style style:name="cHead" style:family="table-cell"><style:table-cell-properties fo:background-color="#d9e2f3"
 fo:border-bottom="0.06pt solid #1f3864" style:vertical-align="middle"/><style:paragraph-properties fo:text-align="center"/>
<style:text-properties fo:font-weight="bold" fo:color="#1f3864"/></style:style>
<style:style style:name="cName" style:family="table-cell"><style:text-properties fo:font-size="9pt"/></style:style>
<style:style style:name="cCode" style:family="table-cell" style:data-style-name="nText"><style:text-properties
 fo:font-size="9pt"/></style:style>
<style:style style:name="cQuantity" style:family="table-cell" style:data-style-name="nQuantity"><style:text-properties
 fo:font-size="9pt"/></style:style>
<style:style style:name="cMoney" style:family="table-cell" style:data-style-name="nMoney"><style:text-properties
 fo:font-size="9pt"/></style:style>
<style:style style:name="cLabel" style:family="table-cell"><style:table-cell-properties fo:background-color="#f2f2f2"/>
<style:text-properties fo:font-weight="bold" fo:font-size="9pt"/></style:style>
<style:style style:name="cTotal" style:family="table-cell" style:data-style-name="nMoney"><style:table-cell-properties
 fo:background-color="#f2f2f2"/><style:text-properties fo:font-weight="bold" fo:font-size="9pt"/></style:style>
<style:style style:name="cCount" style:family="table-cell" style:data-style-name="nQuantity"><style:table-cell-properties
 fo:background-color="#f2f2f2"/><style:text-properties fo:font-weight="bold" fo:font-size="9pt"/></style:style>
<style:style style:name="tOrder" style:family="table" style:master-page-name="Order"/>
<style:page-layout style:name="page"><style:page-layout-properties fo:page-width="21cm" fo:page-height="29.7cm"
 style:print-orientation="portrait" fo:margin="1.5cm" style:scale-to-X="1" style:scale-to-Y="0"
 style:print="objects charts drawings"/>
<style:header-style><style:header-footer-properties fo:min-height="1cm" fo:margin-bottom="0.3cm"/></style:header-style>
<style:footer-style><style:header-footer-properties fo:min-height="1cm" fo:margin-top="0.3cm"/></style:footer-style>
</style:page-layout>
</office:automatic-styles>
<office:master-styles><style:master-page style:name="Order" style:page-layout-name="page">
<style:header><style:region-left><text:p>Purchase order of spare parts</text:p></style:region-left>
<style:region-right><text:p><text:file-name text:display="name-and-extension">Ord.Xls</text:file-name></text:p></style:region-right></style:header>
<style:footer><style:region-center><text:p>Page <text:page-number>1</text:page-number> of
 <text:page-count>1</text:page-count></text:p></style:region-center></style:footer>
</style:master-page></office:master-styles>
<office:body><office:spreadsheet>
END
}

foot() { echo '</office:spreadsheet></office:body></office:document>'; }

# columns WIDTH:STYLE...; the style is that of the cells below the last row
columns() {
    for column; do
        echo "<table:table-column table:style-name=\"w${column%:*}\" table:default-cell-style-name=\"${column#*:}\"/>"
    done
}

# words STYLE TEXT...; number STYLE VALUE; formula STYLE TEXT; blank STYLE...
words() {
    style=$1
    shift
    for text; do
        echo "<table:table-cell table:style-name=\"$style\" office:value-type=\"string\"><text:p>$text</text:p></table:table-cell>"
    done
}
number() { echo "<table:table-cell table:style-name=\"$1\" office:value-type=\"float\" office:value=\"$2\"/>"; }
formula() { echo "<table:table-cell table:style-name=\"$1\" table:formula=\"of:=$2\"/>"; }
blank() {
    for style; do echo "<table:table-cell table:style-name=\"$style\"/>"; done
}
# An export keeps the heights: they leave room for a font that stands in for a missing one.
row() { echo "<table:table-row table:style-name=\"rLine\">"; }
end_row() { echo "</table:table-row>"; }

# What stands beside the first rows: label and formula.
total() {
    blank Default
    case $1 in
        2) words cLabel "Lines" && formula cCount "COUNTA([.A2:.A$last_row])" ;;
        3) words cLabel "Quantity" && formula cCount "SUM([.D2:.D$last_row])" ;;
        4) words cLabel "Total" && formula cTotal "SUMPRODUCT([.D2:.D$last_row];[.E2:.E$last_row])" ;;
    esac
}

template() {
    head
    echo "<table:table table:name=\"Ord\" table:style-name=\"tOrder\">"
    columns Code:cCode Name:cName Quantity:cQuantity Quantity:cQuantity Rate:cMoney Amount:cMoney Gap:Default Caption:Default \
        Total:Default
    echo "<table:table-header-rows><table:table-row table:style-name=\"rHead\">"
    words cHead "Part Number" "Part Name" "M.O.Q." "Order Qty." "Rate" "Amount"
    echo "</table:table-row></table:table-header-rows>"
    for r in $(seq 2 $amount_rows); do
        row
        blank cCode cName cQuantity cQuantity cMoney
        formula cMoney "IF([.A$r]=&quot;&quot;;&quot;&quot;;[.D$r]*[.E$r])"
        if [ "$r" -le 4 ]; then total "$r"; fi
        end_row
    done
    echo "</table:table>"
    foot
}

# The branch writes quantities the way people do; the last line's part is unknown to the sample dealership.
branch_order() {
    head
    echo "<table:table table:name=\"ORDER\" table:style-name=\"tOrder\">"
    columns Code:cCode Name:cName Quantity:cQuantity Rate:cMoney Quantity:cQuantity
    row
    words cHead PC PN QTY RATE MOQ
    end_row
    while IFS='|' read -r code name quantity rate moq; do
        row
        words cCode "$code"
        words cName "$name"
        case $quantity in
            *[!0-9.]*) words cName "$quantity" ;;
            *) number cQuantity "$quantity" ;;
        esac
        number cMoney "$rate"
        number cQuantity "$moq"
        end_row
    done <branch-order.txt
    echo "</table:table>"
    foot
}

template >"$work/Ord.fods"
branch_order >"$work/branch-order.fods"
soffice --headless "-env:UserInstallation=file://$work/profile" --convert-to 'xls:MS Excel 97' --outdir "$work" \
    "$work/Ord.fods" "$work/branch-order.fods" >/dev/null 2>&1
mv "$work/Ord.xls" Ord.Xls
mv "$work/branch-order.xls" branch-order.xls
