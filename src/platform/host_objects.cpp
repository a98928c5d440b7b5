#include "platform/host_objects.hpp"

#include <filesystem>
#include <mutex>

#include "platform/dispatch.hpp"
#include "platform/error.hpp"
#include "platform/runtime.hpp"

namespace hist {

// ---------------------------------------------------------------- application

DefaultApplication::DefaultApplication() : company_("Laboratorio"), product_("Historicos") {
    std::error_code ec;
    auto cwd = std::filesystem::current_path(ec);
    setPath(ec ? std::string(".") : cwd.string());
}

void DefaultApplication::setPath(std::string s) {
    while (s.size() > 1 && (s.back() == '/' || s.back() == '\\')) s.pop_back();
    path_ = std::move(s);
}

namespace {
std::mutex appMutex;
std::shared_ptr<Application>& appSlot() {
    static std::shared_ptr<Application> app = std::make_shared<DefaultApplication>();
    return app;
}
}  // namespace

std::shared_ptr<Application> applicationPtr() {
    std::lock_guard lock(appMutex);
    return appSlot();
}

Application& application() { return *applicationPtr(); }

void setApplication(std::shared_ptr<Application> app) {
    std::lock_guard lock(appMutex);
    appSlot() = app ? std::move(app) : std::make_shared<DefaultApplication>();
}

HostEnvironment& hostEnvironment() {
    static HostEnvironment env;
    return env;
}

// ---------------------------------------------------------------- controls

namespace {
constexpr std::pair<ControlKind, const char*> kKindNames[] = {
    {ControlKind::TextBox, "TextBox"},   {ControlKind::ComboBox, "ComboBox"},
    {ControlKind::ListBox, "ListBox"},   {ControlKind::CheckBox, "CheckBox"},
    {ControlKind::DataCombo, "DataCombo"}, {ControlKind::Other, "Other"},
};

bool sameName(std::string_view a, std::string_view b) { return foldName(a) == foldName(b); }
}  // namespace

const char* controlKindName(ControlKind k) noexcept {
    for (auto& [kind, name] : kKindNames)
        if (kind == k) return name;
    return "Other";
}

std::optional<ControlKind> controlKindFromName(std::string_view name) {
    for (auto& [kind, n] : kKindNames)
        if (sameName(n, name)) return kind;
    return std::nullopt;
}

StandInControl::StandInControl(ControlKind kind) : kind_(kind) {}

std::pair<std::string, Variant>* StandInControl::slot(std::string_view property) {
    for (auto& p : props_)
        if (sameName(p.first, property)) return &p;
    return nullptr;
}

const std::pair<std::string, Variant>* StandInControl::slot(std::string_view property) const {
    for (auto& p : props_)
        if (sameName(p.first, property)) return &p;
    return nullptr;
}

void StandInControl::put(std::string_view property, const Variant& value) {
    if (auto* p = slot(property)) p->second = value;
    else props_.emplace_back(std::string(property), value);
}

bool StandInControl::has(std::string_view property) const {
    if (list_ && (sameName(property, "ListCount") || sameName(property, "List"))) return true;
    return slot(property) != nullptr;
}

Variant StandInControl::get(std::string_view property) const {
    if (list_ && sameName(property, "ListCount")) return Variant(static_cast<int32_t>(list_->size()));
    if (const auto* p = slot(property)) return p->second;
    raise(err::NoSuchMember, err::SrcRuntime,
          std::string(err::standardDescription(err::NoSuchMember)) + ": " + std::string(property));
}

void StandInControl::set(std::string_view property, const Variant& value) {
    if (!has(property) || (list_ && sameName(property, "ListCount")))
        raise(err::NoSuchMember, err::SrcRuntime,
              std::string(err::standardDescription(err::NoSuchMember)) + ": " + std::string(property));
    define(property, value);
}

void StandInControl::define(std::string_view property, const Variant& value) {
    if (sameName(property, "ListCount") && list_) return;  // follows the rows
    if (list_ && sameName(property, "ListIndex")) {
        put("ListIndex", Variant(rt::CLng(value)));
        syncTextFromIndex();
        return;
    }
    if (list_ && sameName(property, "Text")) {
        const std::string text = rt::CStr(value);
        int32_t index = -1;
        for (size_t i = 0; i < list_->size(); ++i)
            if ((*list_)[i] == text) {
                index = static_cast<int32_t>(i);
                break;
            }
        put("Text", Variant(text));
        put("ListIndex", Variant(index));
        return;
    }
    put(property, value);
}

void StandInControl::setList(std::vector<std::string> rows) {
    list_ = std::move(rows);
    if (!slot("ListIndex")) {
        // A text naming a row selects it; otherwise no row is selected.
        if (const auto* t = slot("Text")) define("Text", t->second);
        else put("ListIndex", Variant(int32_t{-1}));
    }
    syncTextFromIndex();
}

void StandInControl::syncTextFromIndex() {
    const auto* li = slot("ListIndex");
    if (!list_ || !li) return;
    const int32_t i = rt::CLng(li->second);
    if (i >= 0 && static_cast<size_t>(i) < list_->size()) put("Text", Variant((*list_)[static_cast<size_t>(i)]));
    else if (!slot("Text") || kind_ == ControlKind::ListBox) put("Text", Variant(std::string()));
}

std::string StandInControl::defaultProperty() const {
    if (default_) return *default_;
    return (kind_ == ControlKind::CheckBox || kind_ == ControlKind::Other) ? "Value" : "Text";
}

std::vector<std::pair<std::string, Variant>> StandInControl::properties() const {
    auto out = props_;
    if (list_) out.emplace_back("ListCount", Variant(static_cast<int32_t>(list_->size())));
    return out;
}

// ---------------------------------------------------------------- grid columns

StandInColumns::StandInColumns(const std::vector<ColumnData>& cols) {
    for (const auto& c : cols) add(c);
}

std::shared_ptr<GridColumn> StandInColumns::Item(int32_t index) const {
    if (index < 0 || index >= Count()) raise(err::SubscriptOutOfRange, err::SrcRuntime);
    return cols_[static_cast<size_t>(index)];
}

// ---------------------------------------------------------------- events

namespace {
struct EventState {
    std::map<std::string, int> counts;
    std::vector<std::pair<int, Events::Listener>> listeners;
    int nextToken = 1;
    std::function<void()> sound;
};
EventState& events() {
    thread_local EventState s;
    return s;
}
}  // namespace

void Events::raise(const Object* source, std::string_view name) {
    auto& s = events();
    ++s.counts[std::string(name)];
    // Copy: a listener may subscribe or unsubscribe while being told.
    auto listeners = s.listeners;
    for (auto& [token, l] : listeners) l(source, name);
}

void Events::beep() {
    auto& s = events();
    if (s.sound) s.sound();
    raise(nullptr, event::Beep);
}

void Events::setBeepSound(std::function<void()> sound) { events().sound = std::move(sound); }

int Events::subscribe(Listener l) {
    auto& s = events();
    s.listeners.emplace_back(s.nextToken, std::move(l));
    return s.nextToken++;
}

void Events::unsubscribe(int token) {
    auto& ls = events().listeners;
    std::erase_if(ls, [token](const auto& p) { return p.first == token; });
}

int Events::count(std::string_view name) {
    auto& c = events().counts;
    auto it = c.find(std::string(name));
    return it == c.end() ? 0 : it->second;
}

std::map<std::string, int> Events::counts() { return events().counts; }

void Events::resetCounts() { events().counts.clear(); }

// ---------------------------------------------------------------- data members

void DataMembers::Add(const std::string& name) { names_.push_back(name); }

std::string DataMembers::Item(const Variant& index) const {
    if (index.isString()) {
        for (const auto& n : names_)
            if (sameName(n, index.asString())) return n;
        raise(err::InvalidCall, err::SrcRuntime);
    }
    const int32_t i = rt::CLng(index);
    if (i < 1 || i > Count()) raise(err::SubscriptOutOfRange, err::SrcRuntime);
    return names_[static_cast<size_t>(i - 1)];
}

bool DataMembers::contains(std::string_view name) const {
    for (const auto& n : names_)
        if (n == name) return true;
    return false;
}

void DataMembers::changed(const std::string&) const { Events::raise(owner_, event::DataMemberChanged); }

// ---------------------------------------------------------------- dispatch

void registerHostObjectClasses(Registry& r) {
    r.define<Application>("App", nullptr)
        .get("CompanyName", &Application::CompanyName)
        .get("ProductName", &Application::ProductName)
        .get("Major", &Application::Major)
        .get("Minor", &Application::Minor)
        .get("Path", &Application::Path);
    r.define<GridColumns>("Columns", nullptr)
        .get("Count", &GridColumns::Count)
        .method("Item", {in("Index", PT::Long)}, &GridColumns::Item)
        .defaultMember("Item");
    r.define<GridColumn>("Column", nullptr)
        .get("Visible", &GridColumn::Visible)
        .get("Caption", &GridColumn::Caption)
        .get("Alignment", &GridColumn::Alignment)
        .get("DataField", &GridColumn::DataField);
    r.define<DataMembers>("DataMembers")
        .method("Clear", {}, &DataMembers::Clear)
        .method("Add", {in("DataMember", PT::String)}, &DataMembers::Add)
        .get("Count", &DataMembers::Count)
        .method("Item", {in("Index")}, &DataMembers::Item)
        .defaultMember("Item");
}

}  // namespace hist
