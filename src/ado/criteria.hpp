#pragma once
// Criteria of Filter and Find: `field op value` clauses joined by And / Or, in the
// recordset's own grammar (not SQL). A filter is an Or of And-groups; an Or-group
// may not be And-ed with another clause. Find takes a single clause.
//
// Values: 'text' (a quote inside doubled), #date# (read by the regional settings
// first, then as ISO; on a text field it is plain text), a bare number (a point as
// the decimal mark; a dollar sign and an exponent allowed), Null (`= Null`,
// `<> Null`). The field's type decides how a value converts: a quoted number on a
// numeric field compares as a number. Text compares without regard to case.
// Like takes `*` or `%` at the end or at both ends.
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ado/values.hpp"
#include "backends/engine.hpp"

namespace hist::ado {

enum class CmpOp : uint8_t { Eq, Ne, Lt, Gt, Le, Ge, Like };

struct Clause {
    enum class Lit : uint8_t { Null, Text, Number };
    enum class Shape : uint8_t { Exact, Prefix, Contains, All };
    int field = -1;
    CmpOp op = CmpOp::Eq;
    ValueClass cls = ValueClass::Text;
    Lit lit = Lit::Text;
    Shape shape = Shape::Exact;  // Like only
    std::string text;            // the literal; folded for Like
    double number = 0.0;

    bool test(const CellView& c) const;
};

class Criteria {
public:
    // The field index of a name (-1 when the recordset has none) and the type of a field.
    using Resolver = std::function<int(std::string_view)>;
    using TypeOf = std::function<backend::FieldType(int)>;

    // Throws 3001 for text the grammar refuses, 3265 for an unknown field, the
    // provider's type mismatch for a #value# on a long-text field.
    static Criteria parse(std::string_view text, const Resolver& resolve, const TypeOf& typeOf,
                          bool singleClause);

    bool empty() const noexcept { return groups_.empty(); }
    // `cell(field)` gives the row's value of a field.
    template <class CellOf>
    bool matches(CellOf&& cell) const {
        for (const auto& group : groups_) {
            bool all = true;
            for (const Clause& c : group)
                if (!c.test(cell(c.field))) {
                    all = false;
                    break;
                }
            if (all) return true;
        }
        return groups_.empty();
    }
    const std::vector<std::vector<Clause>>& groups() const noexcept { return groups_; }

private:
    std::vector<std::vector<Clause>> groups_;
};

}  // namespace hist::ado
