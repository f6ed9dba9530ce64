#include "qvimanager/diagnostics/log_item.h"

#include "qvimanager/diagnostics/memory_manager.h"

namespace Diagnostics {

namespace {

// Appends `piece` `count` times. A text holds at most 255 characters, so
// once a block's size in pieces is appended, more change nothing: stop
// there rather than loop over an indent that has wrapped below zero.
void AppendRepeated(String& text, const char* piece, unsigned count)
{
    for (unsigned i = 0; i < count && i < FixBlockSizeMemoryManager::BlockSize; ++i) {
        text += piece;
    }
}

// Two blanks per level of indent above 1, then the info: the line of both
// kinds of debug item.
String DebugLine(const LogItem& item)
{
    String text;
    const unsigned indent = item.GetIndent();
    if (indent > 1) {
        AppendRepeated(text, "  ", indent - 1);
    }
    if (item.HasInfo()) {
        item.AddInfo(text);
    }
    return text;
}

} // namespace

LogItem::LogItem(unsigned itemIndent, const ObjectID& object, const FunctionID& function)
    : functionID(function), objectID(object), indent(itemIndent)
{
}

String LogItem::ToString() const
{
    String text;
    if (indent > 1) {
        AppendRepeated(text, "| ", indent - 1);
    }
    AddType(text);
    AddSeparator(text);
    if (objectID.KnowsObject()) {
        text += objectID.ToString();
        AddSeparator(text);
    }
    text += functionID.GetDescription();
    if (HasInfo()) {
        AddSeparator(text);
        AddInfo(text);
    }
    return text;
}

void LogItem::AddSeparator(String& text) const
{
    text += " - ";
}

const FunctionID& LogItem::GetFunctionID() const
{
    return functionID;
}

const ObjectID& LogItem::GetObjectID() const
{
    return objectID;
}

unsigned LogItem::GetIndent() const
{
    return indent;
}

CallLogItem::CallLogItem(unsigned indent, const ObjectID& object, const FunctionID& function, const String& text)
    : LogItem(indent, object, function), info(text)
{
}

void CallLogItem::AddType(String& text) const
{
    text += "CALL";
}

bool CallLogItem::HasInfo() const
{
    return info.HasText();
}

void CallLogItem::AddInfo(String& text) const
{
    text += info;
}

ReturnLogItem::ReturnLogItem(unsigned indent, const ObjectID& object, const FunctionID& function, const String& text)
    : LogItem(indent, object, function), info(text)
{
}

void ReturnLogItem::AddType(String& text) const
{
    text += "RETURN";
}

bool ReturnLogItem::HasInfo() const
{
    return info.HasText();
}

void ReturnLogItem::AddInfo(String& text) const
{
    text += "{";
    text += info;
    text += "}";
}

DebugBreakLogItem::DebugBreakLogItem(unsigned indent, const ObjectID& object, const FunctionID& function,
                                     const String& text)
    : LogItem(indent, object, function), info(text)
{
}

String DebugBreakLogItem::ToString() const
{
    return DebugLine(*this);
}

void DebugBreakLogItem::AddType(String& text) const
{
    text += "";
}

bool DebugBreakLogItem::HasInfo() const
{
    return info.HasText();
}

void DebugBreakLogItem::AddInfo(String& text) const
{
    text += info;
}

UserDebugLogItem::UserDebugLogItem(unsigned indent, const ObjectID& object, const FunctionID& function,
                                   const String& text)
    : LogItem(indent, object, function), info(text)
{
}

String UserDebugLogItem::ToString() const
{
    return DebugLine(*this);
}

void UserDebugLogItem::AddType(String& text) const
{
    text += "";
}

bool UserDebugLogItem::HasInfo() const
{
    return info.HasText();
}

void UserDebugLogItem::AddInfo(String& text) const
{
    text += info;
}

} // namespace Diagnostics
