#include "kernel/main/boolcastclass.h"
#include "kernel/main/doublecastclass.h"
#include "kernel/main/integercastclass.h"
#include "kernel/main/parameter.h"
#include "kernel/main/parameterset.h"
#include "kernel/main/qcolorcastclass.h"
#include "kernel/main/qstringvectorcastclass.h"
#include "kernel/main/typesolver.h"
#include "kernel/main/unsignedintegercastclass.h"
#include "kernel/main/vectorcastclass.h"
#include "support/logcapture.h"

#include <QColor>
#include <gtest/gtest.h>
#include <memory>

using qel::main::AbstractParameter;
using qel::main::Parameter;
using qel::main::ParameterSet;
using qel::main::TypeSolver;
using qel::main::VectorCastClass;

namespace {

// Frees what a parameter owns at the end of a test (parameters don't do it themselves).
template <class T>
struct Owned : Parameter<T>
{
    Owned() : Parameter<T>("noName", "noDesc") {}
    ~Owned() override { this->deleteValue(); }
};

} // namespace

TEST(Parameter, CastStringReplacesValueAndBoundPointerFollows)
{
    Owned<double> parameter;
    double* outside = nullptr;
    parameter.bind(&outside);
    EXPECT_FALSE(parameter.hasValue());
    EXPECT_TRUE(parameter.toString().isEmpty());

    ASSERT_TRUE(parameter.castString("2.5"));
    ASSERT_TRUE(parameter.hasValue());
    EXPECT_EQ(2.5, *parameter.getValue());
    EXPECT_EQ(parameter.getValue(), outside);

    ASSERT_TRUE(parameter.castString("-1e3"));
    EXPECT_EQ(-1000.0, *outside);
    EXPECT_EQ("-1000", parameter.toString());

    parameter.deleteValue();
    EXPECT_FALSE(parameter.hasValue());
    EXPECT_EQ(nullptr, outside);
}

TEST(Parameter, FailedCastKeepsOldValueAndLogs)
{
    Owned<double> parameter;
    ASSERT_TRUE(parameter.castString("4"));
    double* before = parameter.getValue();

    qel::test::LogCapture log;
    EXPECT_FALSE(parameter.castString("abc"));
    EXPECT_EQ(before, parameter.getValue());
    EXPECT_EQ(4.0, *parameter.getValue());

    ASSERT_EQ(1, log.count("Parameter::castString() There was an error!", 1000));
    const qel::log::LogRecord record = log.records().front();
    EXPECT_EQ("kernel/main/parameter", record.file);
    EXPECT_EQ(87, record.line);
    EXPECT_EQ("qel::main::Parameter<double>::castString", record.function);
}

TEST(Parameter, BorrowedValueIsNeverFreed)
{
    double shared = 7.0;
    Parameter<double> borrowing("x", "a borrowed value", QString(), false, nullptr);
    double* outside = nullptr;
    borrowing.bind(&outside);
    borrowing.setValuePointer(&shared);
    EXPECT_EQ(&shared, outside);

    borrowing.deleteValue();
    EXPECT_EQ(&shared, borrowing.getValuePointer());
    EXPECT_EQ(&shared, outside);
    EXPECT_EQ(7.0, shared);
}

TEST(Parameter, BindingToItsOwnValueKeepsIt)
{
    Owned<double> parameter;
    ASSERT_TRUE(parameter.castString("6.5"));
    double* outside = parameter.getValue();
    parameter.bind(&outside);
    ASSERT_TRUE(parameter.hasValue());
    EXPECT_EQ(outside, parameter.getValue());
    EXPECT_EQ(6.5, *parameter.getValue());

    // Bound again to the same pointer: still the same value, and it follows later casts.
    parameter.bind(&outside);
    EXPECT_EQ(6.5, *outside);
    ASSERT_TRUE(parameter.castString("1"));
    EXPECT_EQ(parameter.getValue(), outside);
    EXPECT_EQ(1.0, *outside);
}

TEST(Parameter, CopyValueSharesOnlyBetweenSameTypes)
{
    Owned<int> source;
    ASSERT_TRUE(source.castString("12"));
    Parameter<int> reader("noName", "noDesc");
    reader.copyValue(&source);
    EXPECT_EQ(source.getValue(), reader.getValue());

    Owned<double> otherType;
    ASSERT_TRUE(otherType.castString("1.5"));
    double* kept = otherType.getValue();
    otherType.copyValue(&source);
    EXPECT_EQ(kept, otherType.getValue());

    source.copyValue(&source);
    EXPECT_EQ(12, *source.getValue());
}

TEST(Parameter, TextParametersTakeAnyTextAsItStands)
{
    Owned<QString> name;
    EXPECT_EQ(nullptr, name.getCastClass());
    EXPECT_TRUE(name.isCastable(" My model [1] "));
    ASSERT_TRUE(name.castString(" My model "));
    EXPECT_EQ(" My model ", name.toString());
}

TEST(Parameter, CloneCopiesOwnedValueAndSharesDefaultText)
{
    Owned<double> original;
    original.setDefaultParameterForDefaultGUI("0");
    ASSERT_TRUE(original.castString("3"));
    std::unique_ptr<AbstractParameter> copy(original.clone());
    ASSERT_TRUE(copy->hasValue());
    EXPECT_NE(original.getValuePointer(), copy->getValuePointer());
    EXPECT_EQ("3", copy->toString());

    copy->setDefaultParameterForDefaultGUI("9");
    EXPECT_EQ("9", original.getDefaultText());
    copy->deleteValue();
    EXPECT_TRUE(original.hasValue());
}

TEST(Parameter, DumpNamesParameterAndPointers)
{
    Parameter<int> parameter("count", "how many");
    const QString text = parameter.dump();
    EXPECT_TRUE(text.contains("(count): value: "));
    EXPECT_TRUE(text.endsWith("\n"));
}

TEST(Parameter, SetFreesOwnedValuesAndCopiesDeeply)
{
    ParameterSet set(4, "point");
    set.addParameter(new Parameter<double>("x", "x"));
    set.addParameter(new Parameter<QString>("name", "name"));
    ASSERT_TRUE(set.getParameter(0)->castString("1"));
    ASSERT_TRUE(set.getParameter(1)->castString("a"));

    ParameterSet copy(set);
    EXPECT_EQ(4, copy.getID());
    ASSERT_EQ(2u, copy.size());
    EXPECT_NE(set.getParameter(0), copy.getParameter(0));
    EXPECT_EQ("1", copy.getParameter(0)->toString());
    EXPECT_EQ(nullptr, copy.getParameter(2));
    EXPECT_TRUE(copy.fits({"2", "b"}));
    EXPECT_FALSE(copy.fits({"b", "2"}));
    EXPECT_EQ(1u, copy.typedParameterCount());
}

TEST(CastClass, ScalarCastClassesRejectGarbage)
{
    qel::main::DoubleCastClass real;
    qel::main::IntegerCastClass whole;
    qel::main::UnsignedIntegerCastClass natural;
    qel::main::BoolCastClass flag;
    for (const char* text : {"1", "-2.5", "1e-3", " 4 "})
        EXPECT_TRUE(real.isCastable(text)) << text;
    for (const char* text : {"", "abc", "1.5x", "1,5", "nan", "inf", "[1]"})
        EXPECT_FALSE(real.isCastable(text)) << text;
    EXPECT_TRUE(whole.isCastable("-3"));
    for (const char* text : {"", "1.5", "abc", "1e3"})
        EXPECT_FALSE(whole.isCastable(text)) << text;
    EXPECT_FALSE(natural.isCastable("-1"));
    EXPECT_TRUE(flag.isCastable("0"));
    EXPECT_TRUE(flag.isCastable("1"));
    for (const char* text : {"", "2", "true", "yes"})
        EXPECT_FALSE(flag.isCastable(text)) << text;

    EXPECT_THROW(real.castString("abc"), qel::Exception);
    double tenth = 0.1;
    EXPECT_EQ("0.1", real.castBack(&tenth));
    bool yes = true;
    EXPECT_EQ("1", flag.castBack(&yes));
}

TEST(CastClass, ColoursCastAnyNameAndWriteHex)
{
    Owned<QColor> colour;
    ASSERT_TRUE(colour.castString("#4c4c4c"));
    EXPECT_EQ("#4c4c4c", colour.toString());
    ASSERT_TRUE(colour.castString("nosuch"));
    EXPECT_FALSE(colour.getValue()->isValid());
    EXPECT_FALSE(colour.isCastable(""));
}

TEST(VectorCastClass, ListOfNumbersRoundTrips)
{
    Owned<std::vector<double>> list;
    ASSERT_TRUE(list.isCastable("[1,2.5,3]"));
    ASSERT_TRUE(list.castString("[1,2.5,3]"));
    EXPECT_EQ((std::vector<double>{1, 2.5, 3}), *list.getValue());
    EXPECT_EQ("[1,2.5,3]", list.toString());
}

TEST(VectorCastClass, OnlyTheOpeningBracketIsChecked)
{
    VectorCastClass<double> cast;
    EXPECT_FALSE(cast.isCastable("1,2,3]"));
    EXPECT_FALSE(cast.isCastable("[]"));
    EXPECT_FALSE(cast.isCastable("[1,x]"));
    EXPECT_FALSE(cast.isCastable(""));
    // The last character is dropped whatever it is.
    EXPECT_TRUE(cast.isCastable("[1,2,30"));
    std::unique_ptr<std::vector<double>> values(static_cast<std::vector<double>*>(cast.castString("[1,2,30")));
    EXPECT_EQ((std::vector<double>{1, 2, 3}), *values);
    EXPECT_EQ(nullptr, cast.castString("[]"));

    std::vector<double> empty;
    EXPECT_EQ("]", cast.castBack(&empty));
}

TEST(VectorCastClass, WholeNumberListsRejectFractions)
{
    Owned<std::vector<unsigned int>> indices;
    EXPECT_TRUE(indices.isCastable("[1,5,9]"));
    EXPECT_FALSE(indices.isCastable("[1,-5]"));
    EXPECT_FALSE(indices.isCastable("[1.5]"));
}

TEST(VectorCastClass, UnknownElementTypeIsReported)
{
    qel::test::LogCapture log;
    VectorCastClass<QString> cast;
    ASSERT_EQ(1, log.count("VectorCastClass(): No cast class found/given", 0));
    const qel::log::LogRecord record = log.records().front();
    EXPECT_EQ("kernel/main/vectorcastclass", record.file);
    EXPECT_EQ(62, record.line);
    EXPECT_EQ("qel::main::VectorCastClass<QString>::VectorCastClass", record.function);
    EXPECT_FALSE(cast.isCastable("[a]"));
}

TEST(VectorCastClass, TextListsKeepBlanksAndMayBeEmpty)
{
    Owned<std::vector<QString>> names;
    ASSERT_TRUE(names.castString("[My model,[x,y],b]"));
    EXPECT_EQ((std::vector<QString>{"My model", "[x,y]", "b"}), *names.getValue());
    ASSERT_TRUE(names.castString("[]"));
    EXPECT_TRUE(names.getValue()->empty());
    EXPECT_EQ("[]", names.toString());
    EXPECT_FALSE(names.isCastable("a,b"));
}

TEST(TypeSolver, SharesSameTypesAndCastsOthersThroughText)
{
    TypeSolver solver;
    Owned<int> whole;
    ASSERT_TRUE(whole.castString("5"));

    Parameter<int> sameType("noName", "noDesc");
    EXPECT_TRUE(solver.solve(&sameType, &whole));
    EXPECT_EQ(whole.getValue(), sameType.getValue());

    Owned<double> real;
    EXPECT_TRUE(solver.solve(&real, &whole));
    EXPECT_EQ(5.0, *real.getValue());

    Owned<QString> text;
    ASSERT_TRUE(text.castString("abc"));
    Owned<double> notANumber;
    qel::test::LogCapture log;
    EXPECT_FALSE(solver.solve(&notANumber, &text));
    EXPECT_FALSE(notANumber.hasValue());
    EXPECT_TRUE(log.records().empty());

    Owned<int> empty;
    EXPECT_FALSE(solver.solve(&sameType, &empty));
    EXPECT_FALSE(solver.solve(nullptr, &whole));
}
