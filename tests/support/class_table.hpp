#pragma once
// The runner of the class statement tables: one data file per record class, read
// line by line, each call made by name through dispatch as a host makes it, and the
// statements it sends compared byte for byte with the texts the file gives.
//
//   # a comment; blank lines separate nothing and are skipped
//   class ClsOrdenesComentarios      (a fresh object of that class; the file may start again)
//   setup <statement>                (run on the archive directly, never through the class)
//   call <Member> <value> ...        (the arguments; - leaves an optional one out)
//   > <operation> <text>             (each statement of the call, in order; none listed: none sent)
//   > ...                            (the statements after those listed are not compared)
//   = <value>                        (the result)
//   back <value|*> ...               (the arguments after the call; * is not compared)
//   error <number>                   (the call fails with that number)
//   query <select> => <rows>         (rows joined by ';' and cells by '|', read on the archive)
//
// Values: 12 (Long), 12i (Integer), 1.5 (Double), "text" (\" and \\ inside), #2026-11-22#
// or #2026-11-22 10:30:00# (Date), true, false, null, empty, nothing (no object), set (an
// object, in a back line). A result that is a collection is written [item, item]; a
// ClsRegistroLinea regs[code|first|second|lot|store|price; ...] (its records' values).
#include <gtest/gtest.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "frame/services/data_service.hpp"
#include "frame/services/helpers.hpp"
#include "platform/collection.hpp"
#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist::test {

struct TableValue {
    Variant value;
    bool skip = false;    // "*" in a back line, "-" in a call
    bool object = false;  // "set": any object
};

inline std::vector<TableValue> parseTableValues(const std::string& text) {
    std::vector<TableValue> out;
    size_t i = 0;
    auto fail = [&](const std::string& why) { throw std::runtime_error(why + " in: " + text); };
    while (i < text.size()) {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        if (text[i] == '"') {
            std::string s;
            for (++i; i < text.size() && text[i] != '"'; ++i) {
                if (text[i] == '\\' && i + 1 < text.size()) ++i;
                s += text[i];
            }
            if (i == text.size()) fail("unclosed text");
            ++i;
            out.push_back({Variant(s)});
            continue;
        }
        const size_t end = text[i] == '#' ? text.find('#', i + 1) + 1 : text.find(' ', i);
        const std::string word = text.substr(i, end == std::string::npos ? std::string::npos : end - i);
        i = end == std::string::npos ? text.size() : end;
        if (word == "*" || word == "-") out.push_back({Variant::missing(), true});
        else if (word == "set") out.push_back({Variant::missing(), false, true});
        else if (word == "true" || word == "false") out.push_back({Variant(word == "true")});
        else if (word == "null") out.push_back({Variant::null()});
        else if (word == "empty") out.push_back({Variant()});
        else if (word == "nothing") out.push_back({Variant(ObjectPtr())});
        else if (word.front() == '#') {
            const auto d = rt::parseIso(word.substr(1, word.size() - 2));
            if (!d) fail("bad date " + word);
            out.push_back({Variant(DateValue{*d})});
        } else if (word.back() == 'i') {
            out.push_back({Variant(rt::CInt(Variant(word.substr(0, word.size() - 1))))});
        } else if (word.find('.') != std::string::npos) {
            out.push_back({Variant(std::stod(word))});
        } else {
            out.push_back({Variant(static_cast<int32_t>(std::stol(word)))});
        }
    }
    return out;
}

// A value as the tables write it, its kind included: 1 (Long), 1i (Integer), 1.0 (Double).
inline std::string tableText(const Variant& v) {
    if (v.type() == VarType::Date) return "#" + rt::isoText(v.asDate().serial) + "#";
    if (v.type() == VarType::Integer) return std::to_string(v.asInteger()) + "i";
    if (v.type() == VarType::Double) {
        char buf[64];
        const auto r = std::to_chars(buf, buf + sizeof buf, v.asDouble());
        std::string t(buf, r.ptr);
        return t.find_first_of(".e") == std::string::npos ? t + ".0" : t;
    }
    if (v.isNothing()) return "nothing";
    if (v.type() == VarType::Object) {
        std::string out;
        if (auto col = std::dynamic_pointer_cast<Collection>(v.asObject())) {
            for (const Variant& item : col->values()) out += (out.empty() ? "" : ", ") + tableText(item);
            return "[" + out + "]";
        }
        if (auto regs = std::dynamic_pointer_cast<services::ClsRegistroLinea>(v.asObject())) {
            for (const auto& r : regs->records())
                out += (out.empty() ? "" : "; ") + r.codigo + "|" + tableText(Variant(double{r.cantidadPrevia})) + "|" +
                       tableText(Variant(double{r.cantidad})) + "|" + r.lote + "|" + tableText(r.idAlmacen) + "|" +
                       tableText(Variant(r.precio));
            return "regs[" + out + "]";
        }
        return "object";
    }
    if (v.isNull()) return "null";
    if (v.isMissing()) return "-";
    return std::string(v.type() == VarType::String ? "\"" : "") + rt::CStr(v) +
           (v.type() == VarType::String ? "\"" : "");
}

// Runs one table. `setup` runs a statement on the archive; `rows` reads a selection as
// "a|b;c|d". `rowId` is the name of the engine's hidden row identity, which the
// tables write as rowid in the write-back's statements.
inline void runClassTable(const std::filesystem::path& file, const std::function<void(const std::string&)>& setup,
                          const std::function<std::string(const std::string&)>& rows,
                          const std::string& rowId = "rowid") {
    const std::regex rowIdWord("\\browid\\b");
    std::ifstream in(file);
    ASSERT_TRUE(in) << file;
    ObjectPtr obj;
    std::vector<std::string> sent;
    auto observer = services::StatementObservers::subscribe(
        [&](const services::StatementEvent& e) { sent.push_back(e.op + " " + e.composed); });

    // The call in progress and what is expected of it, checked when the next call starts.
    struct Pending {
        int line = 0;
        std::string text;
        Args args;
        Variant result;
        long error = 0;
        std::vector<std::string> statements;
        std::vector<std::string> expected;
        bool active = false;
    } call;
    auto finish = [&] {
        if (!call.active) return;
        const std::string where = file.filename().string() + ":" + std::to_string(call.line) + " " + call.text;
        if (!call.expected.empty() && call.expected.back() == "...") {
            call.expected.pop_back();
            if (call.statements.size() > call.expected.size()) call.statements.resize(call.expected.size());
        }
        EXPECT_EQ(call.statements, call.expected) << where;
        EXPECT_EQ(call.error, 0) << where << " failed: " << tableText(call.result);
        call.active = false;
    };

    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        if (line.empty() || line[0] == '#') continue;
        const std::string where = file.filename().string() + ":" + std::to_string(number);
        const size_t sp = line.find(' ');
        const std::string verb = line.substr(0, sp);
        const std::string rest = sp == std::string::npos ? "" : line.substr(sp + 1);
        SCOPED_TRACE(where + " " + line);
        if (verb == "class") {
            finish();
            obj = Registry::global().create(rest);
        } else if (verb == "setup") {
            finish();
            setup(rest);
        } else if (verb == "call") {
            finish();
            const size_t msp = rest.find(' ');
            const std::string member = rest.substr(0, msp);
            call = Pending{number, line, {}, {}, 0, {}, {}, true};
            for (const TableValue& v : parseTableValues(msp == std::string::npos ? "" : rest.substr(msp + 1)))
                call.args.push_back(v.value);
            sent.clear();
            try {
                call.result = hist::call(obj, member, call.args);
            } catch (const Error& e) {
                call.error = e.number();
                call.result = Variant(e.description());
            }
            call.statements = sent;  // a failure no "error" line announces is reported by finish()
        } else if (verb == ">") {
            call.expected.push_back(std::regex_replace(rest, rowIdWord, rowId));
        } else if (verb == "=") {
            EXPECT_EQ(call.error, 0) << where << ": " << tableText(call.result);
            if (rest.starts_with("[") || rest.starts_with("regs[")) {
                EXPECT_EQ(tableText(call.result), rest) << where;  // a collection, item by item
                continue;
            }
            const TableValue v = parseTableValues(rest).at(0);
            EXPECT_EQ(tableText(call.result), tableText(v.value)) << where;
        } else if (verb == "back") {
            const auto back = parseTableValues(rest);
            ASSERT_LE(back.size(), call.args.size()) << where;
            for (size_t k = 0; k < back.size(); ++k) {
                if (back[k].skip) continue;
                if (back[k].object) {
                    EXPECT_TRUE(call.args[k].type() == VarType::Object && !call.args[k].isNothing())
                        << where << " arg " << k << " is not an object";
                    continue;
                }
                EXPECT_EQ(tableText(call.args[k]), tableText(back[k].value)) << where << " arg " << k;
            }
        } else if (verb == "error") {
            EXPECT_EQ(call.error, std::stol(rest)) << where << ": " << tableText(call.result);
            call.error = 0;
        } else if (verb == "query") {
            finish();
            const size_t arrow = rest.find(" => ");
            ASSERT_NE(arrow, std::string::npos) << where;
            EXPECT_EQ(rows(rest.substr(0, arrow)), rest.substr(arrow + 4)) << where;
        } else {
            ADD_FAILURE() << where << ": unknown line";
        }
    }
    finish();
}

}  // namespace hist::test
