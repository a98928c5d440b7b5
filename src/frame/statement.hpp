#pragma once
// Statement templates. A class writes each statement once, as the text it sends,
// with named holes where values go:
//
//     INSERT INTO HOrdenes_Comentarios ( Id, Codigo, Comentarios, Descripcion, Fecha)
//         Values ( {Id} , '{vCodigo}', '{sComent}', '{sDescripcion}' , {F:dtFecha} )
//
// Braces never occur in the dialect's statements, so a hole cannot collide with text.
// A hole's prefix says how its value is written:
//
//   {x}      the value's text as concatenation gives it (Null, Empty and Missing add nothing)
//   {F:x}    FechaSql(4, x): the service's date literal
//   {FL:x}   FechaSql(4, x) or FechaSqlLocal(x), as bFechaServidor(4) chooses
//   {N:x}    NumeroSql(x, 6); {N2:x} and so on with another number of decimals
//   {D:x}    the plain text of x as a Double, in the regional settings (a decimal comma stays)
//   {T:x}    the plain text of x as a Date, in the regional settings
//   {B:x}    a boolean as its 16-bit integer text ("-1", "0")
//   {A:x}    the absolute value of a boolean ("1", "0")
//   {S:x}    a date as its whole day count from 1899-12-30
//   {table}  the class's table (not a value)
//
// Filling gives exactly the text that concatenating the pieces gives. It also keeps the
// template's shape: a value may not end the literal it stands in (a lone apostrophe in a
// quoted hole) nor add tokens where it stands bare ("1 OR 1=1", a column name). Such a
// value is refused before the statement reaches the engine, with the provider's syntax
// error, so no value can widen a DELETE or UPDATE. Doubled apostrophes stay inside their
// literal and pass, as the engine reads them.
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/error.hpp"
#include "platform/variant.hpp"

namespace hist::frame {

// One value for the hole of that name.
struct HoleValue {
    std::string_view name;
    Variant value;
};
using HoleValues = std::initializer_list<HoleValue>;

// A filled template. A value that changed the statement's shape is not raised while
// composing: the refusal comes where the statement would reach the engine (text()), so
// what a member does before sending (clearing its data members, filling an unset
// connection) happens as it does when the engine refuses a statement.
class Statement {
public:
    explicit Statement(std::string text, std::optional<Error> refusal = {})
        : text_(std::move(text)), refusal_(std::move(refusal)) {}
    // The text to send; raises the refusal when a value changed the shape.
    const std::string& text() const {
        if (refusal_) throw *refusal_;
        return text_;
    }
    // The text as filled, refused or not (for listings and traces).
    const std::string& filled() const noexcept { return text_; }
    bool refused() const noexcept { return refusal_.has_value(); }

private:
    std::string text_;
    std::optional<Error> refusal_;
};

class Template {
public:
    constexpr Template() = default;
    constexpr Template(const char* text) : text_(text) {}  // NOLINT: a template reads as its text
    constexpr Template(std::string_view text) : text_(text) {}

    constexpr std::string_view text() const noexcept { return text_; }
    constexpr bool empty() const noexcept { return text_.empty(); }

    // The statement with every hole filled. A hole without a value is a programming
    // error (std::logic_error); values without a hole are not used (the frame's members
    // offer every template the same values). A value that would change the
    // statement's shape is the provider's syntax error (-2147217900).
    Statement fill(HoleValues values, std::string_view table = {}) const;
    // The same with values gathered at run time (a member with a run of like arguments).
    Statement fill(std::span<const HoleValue> values, std::string_view table = {}) const;

    // The text with {table} replaced and the value holes left as they are.
    std::string withTable(std::string_view table) const;

private:
    std::string_view text_;
};

// A statement of a class's own member, named for listing ("Insertar", "Obtener[first]").
struct NamedStatement {
    std::string_view name;
    Template text;
};

// The text one hole kind gives for a value (the prefix without its colon: "", "F",
// "FL", "N", "N2", ...). Exposed for the members that write a value outside a template.
std::string holeText(std::string_view kind, const Variant& value);

}  // namespace hist::frame
