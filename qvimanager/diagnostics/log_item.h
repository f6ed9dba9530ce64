#ifndef QVIMANAGER_DIAGNOSTICS_LOG_ITEM_H
#define QVIMANAGER_DIAGNOSTICS_LOG_ITEM_H

// LogItem: the record of one trace event, which publishers turn into a line
// with ToString. Only its four subclasses are ever made, on the stack:
//
//   CALL - Package::Class::Function - ( a:1, b:2 )          CallLogItem
//   | RETURN - 0x55d0c3a1e2f0 - Package::Class::Method - {42} ReturnLogItem
//     message                                               DebugBreakLogItem,
//                                                           UserDebugLogItem
//
// A call or return line starts with "| " for each level of indent above 1,
// then the type, " - ", the object if it is known and " - ", the function's
// description, and " - " and the info if there is any. A debug line starts
// with two blanks for each level of indent above 1, then the info.
//
// A line is a Diagnostics::String, so it is cut at 255 characters; an indent
// that would fill more than that (as one that has run below zero and
// wrapped) fills the line and no more.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/function_id.h"

#include <cstdint>

namespace Diagnostics {

class LogItem {
public:
    LogItem(const LogItem&) = default;
    LogItem& operator=(const LogItem&) = default;

    // Virtual operations in slot order.
    virtual String ToString() const;
    // Appends the item's type.
    virtual void AddType(String& text) const = 0;
    virtual bool HasInfo() const = 0;
    // Appends the item's info.
    virtual void AddInfo(String& text) const = 0;
    // Appends " - ".
    virtual void AddSeparator(String& text) const;

    const FunctionID& GetFunctionID() const;
    const ObjectID& GetObjectID() const;
    unsigned GetIndent() const;

protected:
    LogItem(unsigned indent, const ObjectID& object, const FunctionID& function);
    // Not virtual, to keep the slot order above: items are never deleted
    // through a LogItem pointer.
    ~LogItem() = default;

private:
    FunctionID functionID;
    ObjectID objectID;
    std::uint32_t indent;
};

// A call: type "CALL", info the parameter list as it is.
class CallLogItem : public LogItem {
public:
    CallLogItem(unsigned indent, const ObjectID& object, const FunctionID& function, const String& info);

    void AddType(String& text) const override;
    bool HasInfo() const override;
    void AddInfo(String& text) const override;

private:
    String info;
};

// A return: type "RETURN", info the return value in "{" and "}".
class ReturnLogItem : public LogItem {
public:
    ReturnLogItem(unsigned indent, const ObjectID& object, const FunctionID& function, const String& info);

    void AddType(String& text) const override;
    bool HasInfo() const override;
    void AddInfo(String& text) const override;

private:
    String info;
};

// A developer's message: two blanks per level of indent above 1 and the
// message, nothing else.
class DebugBreakLogItem : public LogItem {
public:
    DebugBreakLogItem(unsigned indent, const ObjectID& object, const FunctionID& function, const String& info);

    String ToString() const override;
    // Appends an empty text.
    void AddType(String& text) const override;
    bool HasInfo() const override;
    void AddInfo(String& text) const override;

private:
    String info;
};

// A user's message (a parameter list): printed like a DebugBreakLogItem.
class UserDebugLogItem : public LogItem {
public:
    UserDebugLogItem(unsigned indent, const ObjectID& object, const FunctionID& function, const String& info);

    String ToString() const override;
    // Appends an empty text.
    void AddType(String& text) const override;
    bool HasInfo() const override;
    void AddInfo(String& text) const override;

private:
    String info;
};

} // namespace Diagnostics

#endif
