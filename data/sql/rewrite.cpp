#include "data/sql/rewrite.h"

#include "common/format.h"
#include "data/sql/expression_text.h"
#include "data/sql/lexer.h"
#include "data/sql/sum_join.h"

#include <algorithm>

namespace sql {
namespace {

/// Splits nested And conditions into the list of conditions that must all hold.
void addConjuncts(const Expr &condition, std::vector<const Expr *> &into)
{
    if (condition.kind != Expr::Kind::And) {
        into.push_back(&condition);
        return;
    }
    for (const ExprPtr &operand : condition.operands)
        addConjuncts(*operand, into);
}

/// True when the value is surely null in a row where the table's fields are all null.
bool isNullWith(const Expr &value, std::size_t source)
{
    if (value.kind == Expr::Kind::Column)
        return value.column.source == source;
    return std::any_of(value.operands.begin(), value.operands.end(),
                       [&](const ExprPtr &operand) { return isNullWith(*operand, source); });
}

/// True when the condition cannot hold for a row in which the table's fields are all null.
bool rejectsNulls(const Expr &condition, std::size_t source)
{
    const auto rejects = [&](const ExprPtr &operand) { return rejectsNulls(*operand, source); };
    switch (condition.kind) {
    case Expr::Kind::And:
        return std::any_of(condition.operands.begin(), condition.operands.end(), rejects);
    case Expr::Kind::Or:
        return std::all_of(condition.operands.begin(), condition.operands.end(), rejects);
    case Expr::Kind::IsNull:
        return condition.negated && isNullWith(*condition.operands.front(), source);
    case Expr::Kind::In:
    case Expr::Kind::Between:
        // Null on the left makes these null, with Not too.
        return isNullWith(*condition.operands.front(), source);
    default:
        return condition.isComparison() &&
               std::any_of(condition.operands.begin(), condition.operands.end(),
                           [&](const ExprPtr &operand) { return isNullWith(*operand, source); });
    }
}

class Rewriter
{
public:
    explicit Rewriter(const Statement &statement)
        : m_statement(statement)
    {}

    Rewritten run()
    {
        for (const Source &source : m_statement.sources)
            m_result.tables.push_back(source.definition);
        m_sumJoin = findSumJoin(m_statement);
        m_groupsAreRows = m_sumJoin && m_sumJoin->groupsAreRows;
        if (m_sumJoin)
            m_text.writeSumsAs(m_groupsAreRows ? sumCall() : "sum(" + sumCall() + ")");
        collectConditions();
        std::string &sql = m_result.sql;
        sql = "SELECT ";
        if (m_statement.kind == Statement::Kind::Delete)
            writeDelete();
        else
            writeItems();
        sql += " FROM ";
        writeFrom(*m_statement.from);
        writeAll(" WHERE ", m_where);
        writeGroups();
        writeAll(" HAVING ", m_having);
        writeOrder();
        m_result.parameters = m_text.parameters();
        return std::move(m_result);
    }

private:
    void collectConditions()
    {
        collectInnerJoins(*m_statement.from);
        if (m_statement.where)
            addConjuncts(*m_statement.where, m_where);
        if (!m_statement.having)
            return;
        std::vector<const Expr *> having;
        addConjuncts(*m_statement.having, having);
        for (const Expr *condition : having) {
            const bool summed =
                !m_groupsAreRows && anyOf(*condition, [](const Expr &inner) { return inner.isAggregate(); });
            // Without Group By there is one group even when no row is left, so nothing may be tested earlier.
            (summed || m_statement.groupBy.empty() ? m_having : m_where).push_back(condition);
        }
    }

    /// The conditions of inner joins are conditions on the rows like those of Where.
    void collectInnerJoins(const FromPart &part)
    {
        if (part.kind == FromPart::Kind::Table)
            return;
        collectInnerJoins(*part.first);
        collectInnerJoins(*part.second);
        if (part.kind == FromPart::Kind::Inner)
            addConjuncts(*part.on, m_where);
    }

    void writeDelete()
    {
        m_result.deletes = true;
        m_result.sql += "s0.rowid";
    }

    // Select list

    void writeItems()
    {
        const bool star = m_statement.items.size() == 1 && !m_statement.items.front().expr;
        m_result.updatable =
            star && m_statement.sources.size() == 1 && !m_statement.distinct && !m_statement.grouped;
        if (m_statement.distinct)
            m_result.sql += "DISTINCT ";
        for (const SelectItem &item : m_statement.items) {
            m_itemColumns.push_back(m_result.columns.size());
            if (item.expr)
                writeItem(item);
            else
                writeStar(item);
        }
        if (m_result.updatable)
            m_result.sql += ", s0.rowid";
    }

    void separate(std::string_view what)
    {
        if (!m_result.columns.empty())
            m_result.sql += ", ";
        m_result.sql += what;
    }

    void writeItem(const SelectItem &item)
    {
        separate(m_text.value(*item.expr));
        std::string name = item.alias;
        if (name.empty() && item.expr->kind == Expr::Kind::Column)
            name = column(item.expr->column).name;
        if (name.empty())
            name = "Expr" + std::to_string(1000 + m_unnamed++); // the names that Access gives
        m_result.columns.push_back({std::move(name), item.expr->type});
    }

    void writeStar(const SelectItem &item)
    {
        for (std::size_t i = 0; i < m_statement.sources.size(); ++i) {
            const Source &source = m_statement.sources[i];
            if (!item.starTable.empty() && !equalNoCase(item.starTable, source.name))
                continue;
            for (std::size_t position = 0; position < source.definition->columns.size(); ++position) {
                separate(ExpressionText::columnName({i, position}));
                const jet::Column &shown = source.definition->columns[position];
                m_result.columns.push_back({shown.name, shown.type()});
            }
        }
    }

    const jet::Column &column(ColumnRef ref) const
    {
        return m_statement.sources[ref.source].definition->columns[ref.position];
    }

    // Tables and conditions

    void writeFrom(const FromPart &part)
    {
        if (part.kind == FromPart::Kind::Table) {
            const Source &source = m_statement.sources[part.source];
            m_result.sql += virtualName(*source.definition) + " AS s" + std::to_string(part.source);
            m_sourceOrder.push_back(part.source);
            return;
        }
        writeFrom(*part.first);
        if (m_sumJoin)
            return;
        if (part.kind == FromPart::Kind::Inner) {
            m_result.sql += " JOIN ";
            writeFrom(*part.second);
            return;
        }
        if (part.second->kind != FromPart::Kind::Table)
            refuse("A LEFT or RIGHT JOIN adds one table at a time.", part.at);
        const bool inner = std::any_of(m_where.begin(), m_where.end(), [&](const Expr *condition) {
            return rejectsNulls(*condition, part.second->source);
        });
        // SQLite would find this out by itself for its own tables, but not for virtual ones.
        m_result.sql += inner ? " JOIN " : " LEFT JOIN ";
        writeFrom(*part.second);
        m_result.sql += " ON " + m_text.condition(*part.on);
    }

    /// The sum that a row of the first table brings, in place of the second table's rows.
    std::string sumCall() const
    {
        // Numbers made here: nothing in it needs to be quoted or bound.
        const SumJoin &join = *m_sumJoin;
        std::string which =
            std::to_string(jet::number(m_statement.sources[join.key.source].definition->page)) + " " +
            std::to_string(join.key.position);
        for (const SumTerm &term : join.terms)
            which += (term.negative ? " -" : " +") + std::to_string(term.position);
        return "jet_sum('" + which + "', " + ExpressionText::columnName(join.outerKey) + ")";
    }

    void writeAll(std::string_view keyword, const std::vector<const Expr *> &conditions)
    {
        for (const Expr *condition : conditions) {
            m_result.sql += keyword;
            m_result.sql += m_text.condition(*condition);
            keyword = " AND ";
        }
    }

    void writeGroups()
    {
        if (m_groupsAreRows)
            return;
        std::string_view keyword = " GROUP BY ";
        for (const ExprPtr &group : m_statement.groupBy) {
            m_result.sql += keyword;
            m_result.sql += m_text.sortable(*group);
            keyword = ", ";
        }
    }

    // Order

    void writeOrder()
    {
        std::vector<std::string> terms;
        for (const OrderItem &item : m_statement.orderBy) {
            std::string term =
                item.item ? std::to_string(m_itemColumns[*item.item] + 1) : m_text.sortable(*item.expr);
            terms.push_back(term + (item.descending ? " DESC" : ""));
        }
        if (m_statement.grouped) {
            for (const ExprPtr &group : m_statement.groupBy) {
                std::string term = m_text.sortable(*group);
                if (std::find(terms.begin(), terms.end(), term) == terms.end())
                    terms.push_back(std::move(term));
            }
        } else if (m_statement.distinct) {
            for (std::size_t i = 1; i <= m_result.columns.size(); ++i)
                terms.push_back(std::to_string(i));
        } else {
            for (const std::size_t source : m_sourceOrder)
                terms.push_back("s" + std::to_string(source) + ".rowid");
        }
        std::string_view keyword = " ORDER BY ";
        for (const std::string &term : terms) {
            m_result.sql += keyword;
            m_result.sql += term;
            keyword = ", ";
        }
    }

    const Statement &m_statement;
    Rewritten m_result;
    ExpressionText m_text;
    std::optional<SumJoin> m_sumJoin;
    bool m_groupsAreRows = false; ///< what is summed up stands in single rows: nothing is grouped
    std::vector<const Expr *> m_where;
    std::vector<const Expr *> m_having;
    std::vector<std::size_t> m_itemColumns; ///< first result column of each item
    std::vector<std::size_t> m_sourceOrder; ///< tables in the order in which their stored order counts
    int m_unnamed = 0;
};

} // namespace

Rewritten rewrite(Statement statement, const TableLookup &tables)
{
    bind(statement, tables);
    return Rewriter(statement).run();
}

std::string virtualName(const jet::TableDefinition &definition)
{
    return "t" + std::to_string(jet::number(definition.page));
}

} // namespace sql
