#include "kernel/util/parameterstringanalyzer.h"

#include <gtest/gtest.h>

using qel::util::ParameterStringAnalyzer;

namespace {

std::vector<QString> split(const QString& text)
{
    std::vector<QString> parts;
    ParameterStringAnalyzer::findParameters(parts, text);
    return parts;
}

} // namespace

TEST(ParameterString, SplitsOnlyAtTopLevelCommas)
{
    EXPECT_EQ((std::vector<QString>{"a", "[1,[2,[3,4]],5]", "b"}), split("a,[1,[2,[3,4]],5],b"));
    EXPECT_EQ((std::vector<QString>{"My model", " x "}), split("My model, x "));
    EXPECT_EQ((std::vector<QString>{"1", "", "2", ""}), split("1,,2,"));
    EXPECT_TRUE(split("").empty());
}

TEST(ParameterString, AcceptsTheWrittenForms)
{
    struct Case
    {
        const char* text;
        const char* name;
        std::vector<QString> arguments;
    };
    const Case cases[] = {
        {"viewscene", "viewscene", {}},
        {"viewscene()", "viewscene", {}},
        {"  fittoview  ", "fittoview", {}},
        {"removesceneelement(My model)", "removesceneelement", {"My model"}},
        {"selectpoint(a,[1,2,3],4)", "selectpoint", {"a", "[1,2,3]", "4"}},
        {"transform(m,[[1,2],[3,[4]]])", "transform", {"m", "[[1,2],[3,[4]]]"}},
        {"translate(My model,1,2,3,0)\n", "translate", {"My model", "1", "2", "3", "0"}},
        {"selectsceneelements([])", "selectsceneelements", {"[]"}},
    };
    for (const Case& c : cases) {
        QString name;
        std::vector<QString> arguments;
        QString error;
        ASSERT_TRUE(ParameterStringAnalyzer::splitCommand(c.text, name, arguments, &error)) << c.text << ": "
                                                                                            << error.toStdString();
        EXPECT_EQ(c.name, name);
        EXPECT_EQ(c.arguments, arguments) << c.text;
    }
}

TEST(ParameterString, RejectsMalformedStringsWithAReason)
{
    const struct
    {
        const char* text;
        const char* reason;
    } cases[] = {
        {"", "Empty command string"},
        {"   ", "Empty command string"},
        {"(1,2)", "Missing command name"},
        {"translate(a,1", "Missing ')'"},
        {"translate(a,[1,2)", "Unbalanced ')'"},
        {"translate(a,[1,2", "Missing ']'"},
        {"translate(a,1,2))", "Unexpected text ')'"},
        {"translate(a,1) x", "Unexpected text ' x'"},
        {"translate(a,,1)", "Empty argument 2"},
        {"translate(a,1,)", "Empty argument 3"},
        {"translate(,a)", "Empty argument 1"},
        {"translate(a,1]", "Unbalanced ']'"},
        {"trans late(a)", "Invalid command name"},
        {"view)", "Invalid command name"},
        {"2d(a)", "Invalid command name"},
    };
    for (const auto& c : cases) {
        QString name = "old";
        std::vector<QString> arguments{"old"};
        QString error;
        EXPECT_FALSE(ParameterStringAnalyzer::splitCommand(c.text, name, arguments, &error)) << c.text;
        EXPECT_TRUE(error.contains(c.reason)) << c.text << " gave: " << error.toStdString();
        EXPECT_TRUE(name.isEmpty());
        EXPECT_TRUE(arguments.empty());
    }
}
