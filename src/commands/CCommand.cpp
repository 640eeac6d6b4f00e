#include "tylhart/commands/CCommand.hpp"

#include <string>

namespace tylhart {

namespace {

// Details of a command print only from this level on, so that ordinary
// levels show a command by its definition alone.
constexpr std::int16_t CommandDetailLevel = 13;

}  // namespace

// ---- CTransaction ----

Ref<CTransaction> CTransaction::GetCopy() const {
    return copyOf(*this);
}

void CTransaction::SetFromObject(const Ref<CTransaction>& toCopy) {
    const CTransaction& source = checked(toCopy);
    TNo = source.TNo;
    Request = copyChild(source.Request);
    Reply = copyChild(source.Reply);
    ResponseCodes = copyChild(source.ResponseCodes);
}

bool CTransaction::Compare(const Ref<CTransaction>& toCompare) const {
    const CTransaction& other = checked(toCompare);
    return TNo == other.TNo && Request.equals(other.Request) && Reply.equals(other.Reply) &&
           ResponseCodes.equals(other.ResponseCodes);
}

Variant CTransaction::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = u"Transaction{TNo:" + decimal(TNo);
    if (infoLevel > 1) {
        const std::int16_t lower = childLevel(infoLevel);
        if (Request) Request.renderInto(out.append(u", Request:"sv), lower);
        // The response codes stand where the reply would: callers compare
        // this text, so the reply list is never printed. Without response
        // codes there is nothing to print there and the rendering fails.
        if (Reply) ResponseCodes.renderInto(out.append(u", Reply:"sv), lower);
        if (ResponseCodes) ResponseCodes.renderInto(out.append(u", ResponseCodes:"sv), lower);
    }
    return std::move(out) + u"}";
}

const ClassInfo& CTransaction::staticClassInfo() {
    static const ClassInfo info = [] {
        using T = CTransaction;
        ClassBuilder<T> b(TypeName);
        b.field(u"TNo", &T::TNo)
            .field(u"Request", &T::Request)
            .field(u"Reply", &T::Reply)
            .field(u"ResponseCodes", &T::ResponseCodes)
            .method(u"GetCopy", &T::GetCopy)
            .method(u"SetFromObject", &T::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &T::Compare, {required(u"ToCompare")})
            .method(u"ToString", &T::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build();
    }();
    return info;
}

// ---- CTransactionSet ----

Text CTransactionSet::keyText(const Ref<CTransaction>& transaction) { return decimal(checked(transaction).TNo); }

Ref<CTransaction> CTransactionSet::FindItem(std::int16_t tNo) const { return findByKeyText(decimal(tNo)); }

const ClassInfo& CTransactionSet::staticClassInfo() {
    static const ClassInfo info = describe();
    return info;
}

// ---- CCommand ----

void CCommand::SetOperation(enumDDCommandOperationType newOperation) {
    if (newOperation < ddcoTRead || newOperation > ddcoTMax)
        errors::raise(u"CCommand.Operation", Text(u"Operation type") + errors::OutOfRangeSuffix);
    operation_ = newOperation;
}

void CCommand::SetFromObject(const Ref<CCommand>& toCopy) {
    const CCommand& source = checked(toCopy);
    Number = source.Number;
    SetOperation(source.operation_);
    Transactions = copyChild(source.Transactions);
    ResponseCodes = copyChild(source.ResponseCodes);
    copyDefinitionFrom(source);
    InRecursion = source.InRecursion;
}

bool CCommand::Compare(const Ref<CCommand>& toCompare) const {
    const CCommand& other = checked(toCompare);
    return Number == other.Number && operation_ == other.operation_ && InRecursion == other.InRecursion &&
           definitionEquals(other) && Transactions.equals(other.Transactions) &&
           ResponseCodes.equals(other.ResponseCodes);
}

Variant CCommand::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = renderHead(u"COMMAND{", infoLevel);
    if (infoLevel >= CommandDetailLevel) {
        // The number prints twice in a row; callers compare this text.
        const Text number = u", Number:" + decimal(Number);
        out += number + number;
        const std::int16_t lower = childLevel(infoLevel);
        if (Transactions) Transactions.renderInto(out.append(u", Transactions:"sv), lower);
        if (ResponseCodes) ResponseCodes.renderInto(out.append(u", ResponseCodes:"sv), lower);
    }
    return std::move(out) + u"}";
}

const ClassInfo& CCommand::staticClassInfo() {
    static const ClassInfo info = [] {
        using C = CCommand;
        ClassBuilder<C> b(TypeName);
        b.field(u"Number", &C::Number)
            .field(u"Transactions", &C::Transactions)
            .field(u"ResponseCodes", &C::ResponseCodes)
            .field(u"InRecursion", &C::InRecursion);
        describeDefinition(b);
        b.property(u"Operation", &C::Operation, &C::SetOperation);
        describeGetCopy(b);
        b.method(u"SetFromObject", &C::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &C::Compare, {required(u"ToCompare")});
        describeMakeObject(b);
        return b.method(u"ToString", &C::ToString, {optional(u"InfoLevel", std::int16_t{1})}).build();
    }();
    return info;
}

// ---- CTransactionDef ----

Ref<CTransactionDef> CTransactionDef::GetCopy() const {
    return copyOf(*this);
}

void CTransactionDef::SetFromObject(const Ref<CTransactionDef>& toCopy) {
    const CTransactionDef& source = checked(toCopy);
    SetCommand(checked(source.command_).GetCopy());
    Number = source.Number;
}

bool CTransactionDef::Compare(const Ref<CTransactionDef>& toCompare) const {
    const CTransactionDef& other = checked(toCompare);
    return Number == other.Number && checked(command_).Compare(other.command_);
}

Variant CTransactionDef::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = u"TransactionDef{Number:" + decimal(Number);
    if (infoLevel > 1 && command_) out.append(u", Command:"sv).append(concatText(command_->ToString(childLevel(infoLevel))));
    return std::move(out) + u"}";
}

const ClassInfo& CTransactionDef::staticClassInfo() {
    static const ClassInfo info = [] {
        using T = CTransactionDef;
        ClassBuilder<T> b(TypeName);
        b.field(u"Number", &T::Number)
            .property(u"Command", &T::Command, &T::SetCommand)
            .asLet()
            .method(u"GetCopy", &T::GetCopy)
            .method(u"SetFromObject", &T::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &T::Compare, {required(u"ToCompare")})
            .method(u"ToString", &T::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build();
    }();
    return info;
}

}  // namespace tylhart
