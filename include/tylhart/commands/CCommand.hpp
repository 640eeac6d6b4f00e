// The COMMAND construct and its parts: CTransaction (one numbered
// request/reply exchange with its own response codes), CTransactionSet
// (transactions keyed by TNo), CCommand (number, operation, transactions
// and the command-wide response codes) and CTransactionDef (a transaction
// number paired with a command).
#pragma once

#include "tylhart/commands/CDataItem.hpp"
#include "tylhart/commands/CResponseCode.hpp"
#include "tylhart/core/Construct.hpp"

namespace tylhart {

class CTransaction final : public Object {
    TYLHART_CLASS(CTransaction)
public:
    // ---- Public fields, in declaration order ----
    std::int16_t TNo = 0;
    Child<CDataItemList> Request;
    Child<CDataItemList> Reply;
    Child<CResponseCodeSet> ResponseCodes;

    Ref<CTransaction> GetCopy() const;
    // TNo, then a copy of Request, Reply and ResponseCodes, in that order; a
    // failing step keeps the steps done before it.
    void SetFromObject(const Ref<CTransaction>& toCopy);
    // TNo, Request, Reply, ResponseCodes.
    bool Compare(const Ref<CTransaction>& toCompare) const;
    // "Transaction{TNo:" ...; above level 1 the request and the response
    // codes one level down. The response codes print under ", Reply:" as
    // well; the reply list itself never prints.
    Variant ToString(std::int16_t infoLevel = 1) const;
};

// Transactions keyed by "I" + TNo. Unlike most sets, a copy replaces what
// the set held.
class CTransactionSet final : public Set<CTransactionSet, Ref<CTransaction>> {
    TYLHART_CLASS(CTransactionSet)
public:
    static constexpr const char16_t* NewElementParam = u"NewTransaction";
    static constexpr const char16_t* ElementParam = u"Transaction";
    static constexpr const char16_t* Label = u"TransactionSet{Count:";
    static constexpr bool ReplacesOnCopy = true;

    static Text keyText(const Ref<CTransaction>& transaction);

    // A copy of the transaction with this number; the store's missing-key
    // error when there is none.
    Ref<CTransaction> FindItem(std::int16_t tNo) const;

    static void describeFindItem(ClassBuilder<CTransactionSet>& b) {
        b.method(u"FindItem", &CTransactionSet::FindItem, {required(u"TNo")});
    }
};

class CCommand final : public Construct<CCommand> {
    TYLHART_CLASS(CCommand)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKCommandDef;
    // The command's kind check reports the menu's Source: it shares the
    // menu's wording and callers match on it.
    static constexpr const char16_t* DefinitionSource = u"Menu.Definition";

    // ---- Public fields, in declaration order ----
    std::int16_t Number = 0;
    Child<CTransactionSet> Transactions;
    Child<CResponseCodeSet> ResponseCodes;
    // Set by clients while they walk the command; only copied and compared
    // here.
    bool InRecursion = false;

    enumDDCommandOperationType Operation() const noexcept { return operation_; }
    // ddcoTRead .. ddcoTMax; anything else is refused and the old value kept.
    void SetOperation(enumDDCommandOperationType newOperation);

    // Number, Operation (checked), copies of Transactions and ResponseCodes,
    // a copy of the definition through the checked Definition let, then
    // InRecursion. A failing step keeps the steps done before it; hosts rely
    // on the order.
    void SetFromObject(const Ref<CCommand>& toCopy);
    // Number, Operation, InRecursion, definition, Transactions,
    // ResponseCodes.
    bool Compare(const Ref<CCommand>& toCompare) const;
    // "COMMAND{" and the definition; the number and the sets only above
    // level 12. Operation and InRecursion never print.
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    enumDDCommandOperationType operation_ = ddcoTRead;
};

class CTransactionDef final : public Object {
    TYLHART_CLASS(CTransactionDef)
public:
    std::int16_t Number = 0;

    // The command itself, shared; the let stores any command (or Nothing)
    // unchecked.
    Ref<CCommand> Command() const { return command_; }
    void SetCommand(const Ref<CCommand>& newCommand) { command_ = newCommand; }

    Ref<CTransactionDef> GetCopy() const;
    // A copy of the command, then Number.
    void SetFromObject(const Ref<CTransactionDef>& toCopy);
    // Number, then the commands.
    bool Compare(const Ref<CTransactionDef>& toCompare) const;
    // "TransactionDef{Number:" ...; above level 1 the command one level down.
    Variant ToString(std::int16_t infoLevel = 1) const;

private:
    Child<CCommand> command_;
};

}  // namespace tylhart
