#include "host/console/language_help.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"
#include "base/translation.h"

namespace orlocal::host {

namespace {

constexpr LanguageHelp kLanguageHelp[] = {
    // Texts.
    {"Char", translatable("The character of a code, or the characters of several, five digits each."), R"(Char ( 65 ))",
     "A"},
    {"Code", translatable("The codes of a text's characters, five digits each, the first character last."),
     R"(Code ( "A" ))", "65"},
    {"Exact", translatable("Whether two texts are the same, capitals too."), R"(Exact ( "Work" ; "work" ))", "0"},
    {"Filter", translatable("The text's characters that stand in the other text."),
     R"(Filter ( "+49 30 123" ; "0123456789" ))", "4930123"},
    {"GetAsBoolean", translatable("0 for nothing and zero, else 1."), R"(GetAsBoolean ( 5 ))", "1"},
    {"GetAsDate", translatable("A text or a number of days as a date."), R"(GetAsDate ( "2026-11-02" ) + 1)",
     "2026-11-03"},
    {"GetAsNumber", translatable("The number in a text."), R"(GetAsNumber ( "5 apples" ) + 1)", "6"},
    {"GetAsText", translatable("A value as a text."), R"(GetAsText ( Date ( 11 ; 2 ; 2026 ) ))", "2026-11-02"},
    {"GetAsTime", translatable("A text or a number of seconds as a time."), R"(GetAsTime ( "09:00:00" ) + 60)",
     "09:01:00"},
    {"GetAsTimestamp", translatable("A text or a number of seconds as a timestamp."),
     R"(GetAsTimestamp ( "2026-11-02 09:00:00" ) + 3600)", "2026-11-02 10:00:00"},
    {"Left", translatable("The first characters of a text."), R"(Left ( "Monday" ; 3 ))", "Mon"},
    {"LeftWords", translatable("The first words of a text."), R"(LeftWords ( "Lunch with Grace" ; 2 ))", "Lunch with"},
    {"Length", translatable("How many characters a text has."), R"(Length ( "Monday" ))", "6"},
    {"Lower", translatable("A text in small letters."), R"(Lower ( "WORK" ))", "work"},
    {"Middle", translatable("So many characters of a text, from a place on."), R"(Middle ( "Monday" ; 4 ; 3 ))", "day"},
    {"MiddleWords", translatable("So many words of a text, from one on."),
     R"(MiddleWords ( "Lunch with Grace" ; 2 ; 2 ))", "with Grace"},
    {"PatternCount", translatable("How often a text has another in it."), R"(PatternCount ( "banana" ; "an" ))", "2"},
    {"Position",
     translatable("Where a text has another in it, from a place on, the so-manieth time; 0 when it has not."),
     R"(Position ( "banana" ; "an" ; 1 ; 2 ))", "4"},
    {"Proper", translatable("A text with a capital at the beginning of each word."), R"(Proper ( "grace hopper" ))",
     "Grace Hopper"},
    {"Quote", translatable("A text in quotes, as a calculation has it."), R"(Quote ( "Work" ))", R"("Work")"},
    {"Replace", translatable("A text with so many characters, from a place on, replaced by another text."),
     R"(Replace ( "Monday" ; 1 ; 3 ; "Fri" ))", "Friday"},
    {"Right", translatable("The last characters of a text."), R"(Right ( "Monday" ; 3 ))", "day"},
    {"RightWords", translatable("The last words of a text."), R"(RightWords ( "Lunch with Grace" ; 1 ))", "Grace"},
    {"Substitute",
     translatable("A text with every occurrence of one text replaced by another; pairs may stand in brackets."),
     R"(Substitute ( "a-b" ; [ "a" ; "x" ] ; [ "-" ; "+" ] ))", "x+b"},
    {"Trim", translatable("A text without the blanks around it."), R"(Trim ( "  Work " ))", "Work"},
    {"Upper", translatable("A text in capitals."), R"(Upper ( "work" ))", "WORK"},
    {"WordCount", translatable("How many words a text has."), R"(WordCount ( "Lunch with Grace" ))", "3"},
    // Lists: values that stand one a line.
    {"FilterValues", translatable("The values of a list that stand in the other one, too."),
     R"(Substitute ( FilterValues ( List ( "a" ; "b" ; "c" ) ; List ( "c" ; "a" ) ) ; ¶ ; "," ))", "a,c,"},
    {"GetValue", translatable("One value of a list, by its number."), R"(GetValue ( List ( "a" ; "b" ) ; 2 ))", "b"},
    {"LeftValues", translatable("The first values of a list."),
     R"(Substitute ( LeftValues ( List ( 1 ; 2 ; 3 ) ; 2 ) ; ¶ ; "," ))", "1,2,"},
    {"List", translatable("Its values as a list, without those that are empty."),
     R"(Substitute ( List ( "Work" ; "" ; "Home" ) ; ¶ ; "," ))", "Work,Home"},
    {"MiddleValues", translatable("So many values of a list, from one on."),
     R"(Substitute ( MiddleValues ( List ( 1 ; 2 ; 3 ) ; 2 ; 2 ) ; ¶ ; "," ))", "2,3,"},
    {"RightValues", translatable("The last values of a list."),
     R"(Substitute ( RightValues ( List ( 1 ; 2 ; 3 ) ; 1 ) ; ¶ ; "," ))", "3,"},
    {"SortValues", translatable("A list in order."), R"(Substitute ( SortValues ( List ( "b" ; "a" ) ) ; ¶ ; "," ))",
     "a,b,"},
    {"UniqueValues", translatable("A list with each value once."),
     R"(Substitute ( UniqueValues ( List ( "a" ; "b" ; "a" ) ) ; ¶ ; "," ))", "a,b,"},
    {"ValueCount", translatable("How many values a list has."), R"(ValueCount ( List ( "a" ; "b" ) ))", "2"},
    // Numbers.
    {"Abs", translatable("A number without its sign."), "Abs ( -3 )", "3"},
    {"Average", translatable("The mean of its numbers."), "Average ( 1 ; 2 ; 6 )", "3"},
    {"Ceiling", translatable("The next whole number up."), "Ceiling ( 1.2 )", "2"},
    {"Count", translatable("How many of its values are there."), R"(Count ( 1 ; "" ; 3 ))", "2"},
    {"Div", translatable("How often the divisor goes into a number."), "Div ( 7 ; 2 )", "3"},
    {"Exp", translatable("The power of e."), "Exp ( 0 )", "1"},
    {"Floor", translatable("The next whole number down."), "Floor ( 1.8 )", "1"},
    {"Int", translatable("A number without what stands behind its point."), "Int ( -1.8 )", "-1"},
    {"Ln", translatable("The natural logarithm."), "Ln ( 1 )", "0"},
    {"Max", translatable("The greatest of its values."), "Max ( 2 ; 7 ; 5 )", "7"},
    {"Min", translatable("The least of its values."), "Min ( 2 ; 7 ; 5 )", "2"},
    {"Mod", translatable("What is left when the divisor goes into a number."), "Mod ( 7 ; 2 )", "1"},
    {"Round", translatable("A number with so many digits behind its point, rounded."), "Round ( 2.345 ; 2 )", "2.35"},
    {"SetPrecision", translatable("A calculation with so many digits behind the point."), "SetPrecision ( 2 / 3 ; 16 )",
     ".6666666666666667"},
    {"Sign", translatable("-1, 0 or 1."), "Sign ( -3 )", "-1"},
    {"Sqrt", translatable("The square root."), "Sqrt ( 9 )", "3"},
    {"Sum", translatable("The sum of its numbers."), "Sum ( 1 ; 2 ; 3 )", "6"},
    {"Truncate", translatable("A number cut after so many digits behind its point."), "Truncate ( 2.349 ; 2 )", "2.34"},
    // Days and times.
    {"Date", translatable("A day of its month, day and year, or of a text."), "Date ( 11 ; 2 ; 2026 )", "2026-11-02"},
    {"Day", translatable("The day of the month."), "Day ( Date ( 11 ; 2 ; 2026 ) )", "2"},
    {"DayName", translatable("The name of the day of the week."), "DayName ( Date ( 11 ; 2 ; 2026 ) )", "Monday"},
    {"DayOfWeek", translatable("The number of the day of the week, Sunday being 1."),
     "DayOfWeek ( Date ( 11 ; 2 ; 2026 ) )", "2"},
    {"DayOfYear", translatable("The number of the day in its year."), "DayOfYear ( Date ( 2 ; 1 ; 2026 ) )", "32"},
    {"Hour", translatable("The hours of a time."), "Hour ( Time ( 9 ; 30 ; 0 ) )", "9"},
    {"Minute", translatable("The minutes of a time."), "Minute ( Time ( 9 ; 30 ; 0 ) )", "30"},
    {"Month", translatable("The number of the month."), "Month ( Date ( 11 ; 2 ; 2026 ) )", "11"},
    {"MonthName", translatable("The name of the month."), "MonthName ( Date ( 11 ; 2 ; 2026 ) )", "November"},
    {"Seconds", translatable("The seconds of a time."), "Seconds ( Time ( 9 ; 30 ; 15 ) )", "15"},
    {"Time", translatable("A time of its hours, minutes and seconds, or of a text."), "Time ( 9 ; 30 ; 0 )",
     "09:30:00"},
    {"Timestamp", translatable("A moment of a date and a time, or of a text."),
     "Timestamp ( Date ( 11 ; 2 ; 2026 ) ; Time ( 9 ; 30 ; 0 ) )", "2026-11-02 09:30:00"},
    {"WeekOfYear",
     translatable("The number of the week in its year, as calendars on paper begin with the first of January."),
     "WeekOfYear ( Date ( 1 ; 1 ; 2026 ) )", "1"},
    {"WeekOfYearFiscal",
     translatable("The number of the week, the first one having four days in the year; weeks begin at that day."),
     "WeekOfYearFiscal ( Date ( 11 ; 2 ; 2026 ) ; 2 )", "45"},
    {"Year", translatable("The year of a date."), "Year ( Date ( 11 ; 2 ; 2026 ) )", "2026"},
    // Decisions and names.
    {"Case", translatable("The result that follows the first test that is true, else the last one."),
     R"(Case ( 1 > 2 ; "more" ; 1 = 2 ; "same" ; "less" ))", "less"},
    {"Choose", translatable("One of the results by its number, from 0."), R"(Choose ( 1 ; "none" ; "one" ; "two" ))",
     "one"},
    {"Evaluate", translatable("What a text comes to as a calculation."), R"(Evaluate ( "1 + 1" ))", "2"},
    {"False", translatable("0."), "False", "0"},
    {"Get", translatable("What the system knows, by one word."), "Year ( Get ( CurrentDate ) ) > 2000", "1"},
    {"If", translatable("One result when the test is true, else the other one."), R"(If ( 2 > 1 ; "more" ; "less" ))",
     "more"},
    {"IsEmpty", translatable("Whether a value is empty."), R"(IsEmpty ( "" ))", "1"},
    {"IsValid", translatable("Whether a value is none that could not be made."), "IsValid ( 1 / 0 )", "0"},
    {"IsValidExpression", translatable("Whether a text can be read as a calculation."),
     R"(IsValidExpression ( "1 +" ))", "0"},
    {"Let", translatable("A calculation with names for values; names that begin with $ stay."),
     "Let ( [ a = 2 ; b = 3 ] ; a * b )", "6"},
    {"True", translatable("1."), "True", "1"},
    {"While", translatable("Repeats its logic as long as the condition is true."),
     "While ( [ i = 0 ; sum = 0 ] ; i < 4 ; [ i = i + 1 ; sum = sum + i ] ; sum )", "10"},
    // The words of Get.
    {"ApplicationVersion", translatable("The version of this program."), "Get ( ApplicationVersion )", ""},
    {"CurrentDate", translatable("Today."), "Get ( CurrentDate )", ""},
    {"CurrentHostTimestamp", translatable("Now, as the machine of the files has it; here that is this one."),
     "Get ( CurrentHostTimestamp )", ""},
    {"CurrentTime", translatable("The time of day."), "Get ( CurrentTime )", ""},
    {"CurrentTimestamp", translatable("Now."), "Get ( CurrentTimestamp )", ""},
    {"CurrentTimeUTCMilliseconds", translatable("Now, in thousandths of a second since the year 1, in UTC."),
     "Get ( CurrentTimeUTCMilliseconds )", ""},
    {"HostName", translatable("The name of this machine."), "Get ( HostName )", ""},
    {"SystemPlatform", translatable("A number for the kind of system."), "Get ( SystemPlatform )", ""},
    {"UserName", translatable("Who runs this program."), "Get ( UserName )", ""},
    {"UUID", translatable("An identifier that nothing else has."), "Get ( UUID )", ""},
};

}  // namespace

std::span<const LanguageHelp> languageHelp() { return kLanguageHelp; }

const LanguageHelp* languageHelpOn(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kLanguageHelp), std::end(kLanguageHelp),
                                         [name](const LanguageHelp& row) { return equalsNoCase(row.name, name); });
  return found == std::end(kLanguageHelp) ? nullptr : found;
}

}  // namespace orlocal::host
