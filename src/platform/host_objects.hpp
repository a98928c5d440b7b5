#pragma once
// Host objects: what the hosting application gives the library. Each is a small
// interface with a default implementation; a host replaces the ones it has.
//
//   Application     CompanyName, ProductName, Major, Minor, Path (settings and rights
//                   key paths, listing folders)
//   HostEnvironment where the host keeps the archive, configuration, working folder and
//                   the per-user stores (set from the command line)
//   Control         a form control read by kind and by property name
//   GridColumns     the columns of the host's data grid (Count, Item; each column's
//                   Visible, Caption, Alignment, DataField)
//   DataMembers     a data source's list of data member names
//   Events          the beep and the events the library raises (MoveComplete,
//                   DataMemberChanged), counted so a host can see them
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/object.hpp"
#include "platform/variant.hpp"

namespace hist {

class Registry;

// ---------------------------------------------------------------- application
class Application : public Object {
public:
    std::string_view typeName() const override { return "App"; }
    virtual std::string CompanyName() const = 0;
    virtual std::string ProductName() const = 0;
    virtual int16_t Major() const = 0;
    virtual int16_t Minor() const = 0;
    virtual std::string Path() const = 0;  // the application's folder, without a trailing separator
};

class DefaultApplication : public Application {
public:
    DefaultApplication();  // "Laboratorio", "Historicos", 1.0, the working directory at start
    std::string CompanyName() const override { return company_; }
    std::string ProductName() const override { return product_; }
    int16_t Major() const override { return major_; }
    int16_t Minor() const override { return minor_; }
    std::string Path() const override { return path_; }

    void setCompanyName(std::string s) { company_ = std::move(s); }
    void setProductName(std::string s) { product_ = std::move(s); }
    void setMajor(int16_t v) { major_ = v; }
    void setMinor(int16_t v) { minor_ = v; }
    void setPath(std::string s);  // a trailing separator is dropped

private:
    std::string company_, product_, path_;
    int16_t major_ = 1, minor_ = 0;
};

// The application object in force (a DefaultApplication until a host sets another).
Application& application();
std::shared_ptr<Application> applicationPtr();
void setApplication(std::shared_ptr<Application> app);  // null restores a fresh default

// ---------------------------------------------------------------- environment
// Where the host keeps things; empty texts mean "the layer's own default".
struct HostEnvironment {
    std::string dbPath;       // the archive file
    std::string configFile;   // the configuration file
    std::string workDir;      // the user's working folder (HTML listings)
    std::string settingsDir;  // the per-user settings and rights stores
    bool trace = false;       // show each statement to a person
};
HostEnvironment& hostEnvironment();

// ---------------------------------------------------------------- controls
enum class ControlKind { TextBox, ComboBox, ListBox, CheckBox, DataCombo, Other };
const char* controlKindName(ControlKind k) noexcept;
std::optional<ControlKind> controlKindFromName(std::string_view name);  // case ignored

class Control : public Object {
public:
    std::string_view typeName() const override { return "Control"; }
    virtual ControlKind kind() const = 0;
    bool isKind(ControlKind k) const { return kind() == k; }
    virtual bool has(std::string_view property) const = 0;
    // Read or write by name; error 438 for a property the control lacks.
    virtual Variant get(std::string_view property) const = 0;
    virtual void set(std::string_view property, const Variant& value) = 0;
    // The name of the default property.
    virtual std::string defaultProperty() const = 0;
    Variant value() const { return get(defaultProperty()); }
};

// A control made of named properties, as a script host describes it. A list (a
// "List" of rows) gives the control "ListCount", and keeps "ListIndex" and "Text"
// following each other: writing one sets the other. The default property is "Value"
// for a check box and an unknown kind, "Text" for the rest, unless set otherwise.
class StandInControl : public Control {
public:
    explicit StandInControl(ControlKind kind);
    ControlKind kind() const override { return kind_; }
    bool has(std::string_view property) const override;
    Variant get(std::string_view property) const override;
    void set(std::string_view property, const Variant& value) override;
    std::string defaultProperty() const override;

    // Adds or replaces a property without the existence check of set().
    void define(std::string_view property, const Variant& value);
    void setList(std::vector<std::string> rows);
    void setDefaultProperty(std::string name) { default_ = std::move(name); }
    const std::optional<std::string>& explicitDefault() const { return default_; }

    // Every property as the control now holds it, in the order first given
    // (ListCount, ListIndex and Text included when the control has a list).
    std::vector<std::pair<std::string, Variant>> properties() const;
    const std::optional<std::vector<std::string>>& list() const { return list_; }

private:
    std::pair<std::string, Variant>* slot(std::string_view property);
    const std::pair<std::string, Variant>* slot(std::string_view property) const;
    void put(std::string_view property, const Variant& value);
    void syncTextFromIndex();

    ControlKind kind_;
    std::vector<std::pair<std::string, Variant>> props_;
    std::optional<std::vector<std::string>> list_;
    std::optional<std::string> default_;
};

// ---------------------------------------------------------------- grid columns
class GridColumn : public Object {
public:
    std::string_view typeName() const override { return "Column"; }
    virtual bool Visible() const = 0;
    virtual std::string Caption() const = 0;
    virtual int32_t Alignment() const = 0;  // 0 left, 1 right, 2 centre, 3 general
    virtual std::string DataField() const = 0;
};

class GridColumns : public Object {
public:
    std::string_view typeName() const override { return "Columns"; }
    virtual int32_t Count() const = 0;
    // The column at a 0-based position; error 9 outside 0..Count-1.
    virtual std::shared_ptr<GridColumn> Item(int32_t index) const = 0;
};

struct ColumnData {
    std::string caption;
    bool visible = true;
    int32_t alignment = 0;
    std::string dataField;
};

class StandInColumn : public GridColumn {
public:
    explicit StandInColumn(ColumnData d) : d_(std::move(d)) {}
    bool Visible() const override { return d_.visible; }
    std::string Caption() const override { return d_.caption; }
    int32_t Alignment() const override { return d_.alignment; }
    std::string DataField() const override { return d_.dataField; }
    void setVisible(bool v) { d_.visible = v; }
    void setCaption(std::string s) { d_.caption = std::move(s); }
    void setAlignment(int32_t a) { d_.alignment = a; }
    void setDataField(std::string s) { d_.dataField = std::move(s); }
    const ColumnData& data() const { return d_; }

private:
    ColumnData d_;
};

class StandInColumns : public GridColumns {
public:
    StandInColumns() = default;
    explicit StandInColumns(const std::vector<ColumnData>& cols);
    int32_t Count() const override { return static_cast<int32_t>(cols_.size()); }
    std::shared_ptr<GridColumn> Item(int32_t index) const override;
    void add(ColumnData d) { cols_.push_back(std::make_shared<StandInColumn>(std::move(d))); }
    const std::vector<std::shared_ptr<StandInColumn>>& columns() const { return cols_; }

private:
    std::vector<std::shared_ptr<StandInColumn>> cols_;
};

// ---------------------------------------------------------------- events
// Names of the events the library raises.
namespace event {
inline constexpr const char* Beep = "beep";
inline constexpr const char* MoveComplete = "MoveComplete";
inline constexpr const char* DataMemberChanged = "DataMemberChanged";
}  // namespace event

// The events of the current thread (the library runs on its host's thread). Every
// occurrence is counted once under its name, then handed to the listeners. A
// recordset raises MoveComplete for each operation that sets its current row; a class
// that relays its recordset's MoveComplete to its own listeners does not raise it again.
class Events {
public:
    using Listener = std::function<void(const Object* source, std::string_view name)>;

    static void raise(const Object* source, std::string_view name);
    // Sounds the beep (silent unless a host installs a sound) and counts it.
    static void beep();
    static void setBeepSound(std::function<void()> sound);

    static int subscribe(Listener l);  // returns a token for unsubscribe
    static void unsubscribe(int token);

    static int count(std::string_view name);
    static std::map<std::string, int> counts();  // non-zero counts by name
    static void resetCounts();
};

// ---------------------------------------------------------------- data members
// A data source's list of data member names ("Primary"), 1-based like a collection.
// changed() is the DataMemberChanged notification: it raises that event with the
// owner as its source.
class DataMembers : public Object {
public:
    explicit DataMembers(const Object* owner = nullptr) : owner_(owner) {}
    std::string_view typeName() const override { return "DataMembers"; }

    void Clear() { names_.clear(); }
    void Add(const std::string& name);
    int32_t Count() const { return static_cast<int32_t>(names_.size()); }
    std::string Item(const Variant& index) const;  // by position 1..Count (else 9) or name (else 5)
    bool contains(std::string_view name) const;    // exact comparison
    const std::vector<std::string>& names() const { return names_; }

    void changed(const std::string& name) const;
    void setOwner(const Object* owner) { owner_ = owner; }

private:
    const Object* owner_;
    std::vector<std::string> names_;
};

// Registers App, Columns, Column and DataMembers for dispatch.
void registerHostObjectClasses(Registry& r);

}  // namespace hist
