// Texts, exceptions, ids, dates, arrays and options, while memory runs out.

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/system/system_error.hpp>
#include <gtest/gtest.h>

#include "nelvo/context/agent_options.h"
#include "nelvo/core/cnt/buf_reader.h"
#include "nelvo/core/cnt/buf_writer.h"
#include "nelvo/core/date_time.h"
#include "nelvo/core/exc/errno_exc.h"
#include "nelvo/core/exc/file_locked_exc.h"
#include "nelvo/core/exc/rethrow.h"
#include "nelvo/core/exc/runtime_exc.h"
#include "nelvo/core/guid.h"
#include "nelvo/core/util/errno_text.h"
#include "nelvo/core/util/hex.h"
#include "nelvo/core/util/log_name.h"
#include "nelvo/core/util/parse.h"
#include "nelvo/core/util/path_text.h"
#include "nelvo/core/util/quoted_split.h"
#include "nelvo/core/util/str.h"
#include "nelvo/core/util/text.h"
#include "nelvo/core/util/to_text.h"
#include "nelvo/core/util/wide.h"
#include "nelvo/core/util/xml.h"
#include "nelvo/logging/log.h"
#include "tests/faults/allocation_sweep.h"
#include "tests/support/flat_buffer.h"
#include "tests/support/golden.h"
#include "tests/support/lines_receiver.h"

namespace
{

// Texts that no string holds without memory.
const std::string kText = "the quick brown fox jumps over it";
const std::wstring kWideText = L"the quick brown f\u00f6x jumps over it";
const std::string kUtf8Text = "the quick brown f\u00f6x jumps over it";
const char kIdText[] = "{00112233-4455-6677-8899-aabbccddeeff}";

std::string Shown(const std::string& text) { return text; }
std::string Shown(const std::wstring& text) { return util::WideToUtf8(text); }
std::string Shown(bool value) { return value ? "true" : "false"; }
std::string Shown(double value) { return util::ToText(value); }
std::string Shown(const Guid& id) { return id.ToString(); }
std::string Shown(const util::str_t& text) { return text.narrow(); }
std::string Shown(const cnt::plain_array_t& bytes) { return BytesOf(bytes); }
std::string Shown(const cnt::secure_array_t& bytes) { return BytesOf(bytes); }
std::string Shown(const util::path_parts_t& parts) { return parts.folder + "|" + parts.name; }
std::string Shown(const util::wide_path_parts_t& parts) { return Shown(parts.folder + L"|" + parts.name); }

template <class Item>
std::string Shown(const std::vector<Item>& items)
{
    std::string text;
    for (const Item& item : items)
        text += "[" + Shown(item) + "]";
    return text;
}

// The result is what the call gives; a call that throws leaves none.
template <class Call>
void SweepCall(const std::string& expected, Call call)
{
    decltype(call()) value{};
    SweepAllocations({[&] { value = call(); }, [&] { return Shown(std::exchange(value, {})); }, expected});
}

// The same for an operation that changes an object and must leave it as it was if it fails. It gets a new
// object each time.
template <class Object, class Change, class Show>
void SweepChange(const Object& before, const std::string& expected, Change change, Show show)
{
    std::unique_ptr<Object> object;
    const auto renew = [&] { object = std::make_unique<Object>(before); };
    renew();
    SweepAllocations({[&] { change(*object); },
                      [&]
                      {
                          std::string shown = show(*object);
                          renew();
                          return shown;
                      },
                      expected, show(before)});
}

exc::runtime_exc_t Exception()
{
    exc::runtime_exc_t exception("It failed for a reason that is told at length.", exc::error_code_t{7});
    exception.AddMarkedMessage("And it was marked, at some length as well.");
    exception.GetTrace().properties["a key that is not short"] = "a value that is not short";
    exception.AddEvent(3, "an information that is not short");
    return exception;
}

const char kExceptionText[] = "It failed for a reason that is told at length.\n"
                              "--tr:And it was marked, at some length as well.\n"
                              "--tr:property:a key that is not short:a value that is not short\n"
                              "--tr:event:3:an information that is not short";

std::string FullText(const exc::exc_base_t& exception) { return exception.GetFullText(); }

class upper_translator_t : public exc::ITranslator
{
public:
    std::string Translate(const std::string& text) override { return "translated: " + text; }
};

// Memory that ran out is no result.
std::string TextUnlessOfMemory(const exc::exc_base_t& exception)
{
    if (exception.GetPlainText().find("std::bad_alloc") == 0)
        throw;
    return exception.GetFullText();
}

// What a failure is when it has risen through RethrowWithContext.
template <class Throw>
void SweepContext(const std::string& expected, Throw throw_it)
{
    const auto add_context = [&]
    {
        try
        {
            throw_it();
        }
        catch (std::exception& e)
        {
            exc::RethrowWithContext(false, "Looking at what there is to see.", e, Exception().GetTrace());
        }
    };
    SweepCall(expected,
              [&]() -> std::string
              {
                  try
                  {
                      add_context();
                  }
                  catch (const exc::runtime_exc_t& e)
                  {
                      return TextUnlessOfMemory(e);
                  }
                  return "nothing was thrown";
              });
}

const char kContextLines[] = "\nLooking at what there is to see.\n"
                             "--tr:property:a key that is not short:a value that is not short\n"
                             "--tr:event:3:an information that is not short";

} // namespace

TEST(TextWithoutMemory, FormatIsWholeOrThrows)
{
    SweepCall("<the quick brown fox jumps over it> 3 of 4 true",
              [] { return util::Format("<%1> %2 of %3 %4", kText, 3, 4, true); });
    SweepCall("<the quick brown f\u00f6x jumps over it> 3 of 4",
              [] { return util::Format(L"<%1> %2 of %3", kWideText, 3, 4); });
}

TEST(TextWithoutMemory, LongFormatIsWholeOrThrows)
{
    const std::string piece(400, 'a');
    SweepCall(piece + piece + piece, [&] { return util::Format("%1%1%1", piece); });
}

TEST(TextWithoutMemory, NumberBecomesTextOrThrows)
{
    SweepCall("-9,223,372,036,854,775,807", [] { return util::GroupedText(INT64_MIN + 1); });
    SweepCall("9,223,372,036,854,775,807", [] { return util::WideGroupedText(INT64_MAX); });
    SweepCall("16777215.999 TiB", [] { return util::WideSizeText(UINT64_MAX - (1ULL << 30U)); });
    SweepCall("deadbeef", [] { return util::WideHexText(0xdeadbeefU); });
    SweepCall("No such file or directory", [] { return util::ErrnoText(ENOENT); });
}

TEST(TextWithoutMemory, TextBecomesANumberOrThrows)
{
    SweepCall("1.5", [] { return util::ParseDouble("1.5 and a tail that is not looked at"); });
    SweepCall("1.5", [] { return util::ParseDouble(L"1.5 and a tail that is not looked at"); });
    SweepCall("false", [] { return util::ParseBool(L"false"); });
    SweepCall("the quick brown fox!",
              [] { return util::BytesFromHex("74686520717569636b2062726f776e20666f7821"); });
}

TEST(TextWithoutMemory, TextIsSplitOrThrows)
{
    SweepCall("[run][the quick brown fox jumps over it][c]",
              [] { return util::SplitQuoted("run 'the quick brown fox jumps over it' c"); });
    SweepCall("[run][the quick brown fox jumps over it][c]",
              [] { return util::SplitQuoted(L"run 'the quick brown fox jumps over it' c"); });
    SweepCall("[the quick brown fox jumps][over it]",
              []
              {
                  std::vector<std::string> tokens;
                  util::Split("the quick brown fox jumps,over it", ",", tokens);
                  return tokens;
              });
    SweepCall("the quick brown fox jumps over it",
              [] { return util::Trim("  the quick brown fox jumps over it ", " "); });
    SweepCall(
        "{the quick brown fox}, {jumps over it}",
        [] {
            return util::ListText(std::vector<std::string>{"the quick brown fox", "jumps over it"}, true);
        });
}

TEST(TextWithoutMemory, XmlIsEscapedAndBackOrThrows)
{
    const std::string escaped = "the quick &lt;brown&gt; fox &amp; its kin";
    SweepCall(escaped, [] { return util::EscapeXml("the quick <brown> fox & its kin"); });
    SweepCall(escaped, [] { return util::EscapeXml(L"the quick <brown> fox & its kin"); });
    SweepCall("the quick <brown> fox & its kin", [&] { return util::UnescapeXml(escaped); });
    SweepCall("the quick <brown> fox", [] { return util::UnescapeXml(L"the quick &lt;brown&gt; fox"); });
}

TEST(TextWithoutMemory, TextIsConvertedOrThrows)
{
    SweepCall(kUtf8Text, [] { return util::WideToUtf8(kWideText); });
    SweepCall(kUtf8Text, [] { return util::Utf8ToWide(kUtf8Text); });
    SweepCall(kText, [] { return util::WideToMultibyte(L"the quick brown fox jumps over it"); });
    SweepCall(kText, [] { return util::MultibyteToWide(kText); });
    SweepCall(kUtf8Text, [] { return util::str_t(kWideText); });
    SweepCall(kUtf8Text, [] { return util::str_t(kUtf8Text).wide(); });
}

TEST(TextWithoutMemory, LogNameIsPackedAndBackOrThrows)
{
    const std::string packed = "the__quick_Bbrown_Bfox_C1_Bjumps";
    const std::string name = "the_quick-brown-fox+1-jumps";
    SweepCall(packed, [&] { return util::PackLogName(name); });
    SweepCall(packed, [] { return util::PackLogName(L"the_quick-brown-fox+1-jumps"); });
    SweepCall(name, [&] { return util::UnpackLogName(packed); });
    SweepCall(name, [] { return util::UnpackLogName(L"the__quick_Bbrown_Bfox_C1_Bjumps"); });
}

TEST(TextWithoutMemory, PathIsTakenApartOrThrows)
{
    SweepCall("/the/quick/brown/fox|jumps over it all",
              [] { return util::SplitPath("/the/quick/brown/fox/jumps over it all"); });
    SweepCall("/the/quick|jumps over it all",
              [] { return util::SplitPath(L"/the/quick/jumps over it all"); });
    SweepCall("jumps over it all", [] { return util::FileName("/the/quick/brown/fox/jumps over it all"); });
    SweepCall("/the/quick/brown/fox/jumps", [] { return util::JoinPath("/the/quick/brown", "/fox/jumps"); });
}

TEST(ExceptionsWithoutMemory, AreBuiltOrReplacedByBadAlloc)
{
    SweepCall("Failed to open file [the quick brown fox jumps over it].",
              [] { return exc::runtime_exc_t("Failed to open file [%1].", kText).GetPlainText(); });
    SweepCall("the quick brown fox jumps over it 1",
              [] { return exc::runtime_exc_t(L"the quick brown fox jumps over it %1", 1).GetPlainText(); });
    SweepCall("No such file or directory\nFailed to open file [the quick brown fox jumps over it].",
              [] { return posix::errno_exc_t("Failed to open file [%1].", kText, ENOENT).GetPlainText(); });
    SweepCall("File [the quick brown fox jumps over it] is locked.",
              [] { return exc::file_locked_exc_t(kText).GetPlainText(); });
}

TEST(ExceptionsWithoutMemory, AreThrownOrReplacedByBadAlloc)
{
    SweepCall("Failed to open file [the quick brown fox jumps over it].",
              []() -> std::string
              {
                  try
                  {
                      throw exc::runtime_exc_t("Failed to open file [%1].", kText);
                  }
                  catch (const exc::runtime_exc_t& e)
                  {
                      return e.what();
                  }
              });
}

TEST(ExceptionsWithoutMemory, GetALineOrStayAsTheyWere)
{
    const auto show = [](const exc::runtime_exc_t& e) { return FullText(e) + "|" + e.GetPlainText(); };
    exc::runtime_exc_t longer = Exception();
    longer.AddMessage("Looking at the quick brown fox jumps over it.");
    SweepChange(
        Exception(), show(longer), [](exc::runtime_exc_t& e) { e.AddMessage("Looking at %1.", kText); },
        show);
    SweepChange(
        exc::runtime_exc_t(), "--tr:" + kText + "|" + kText,
        [](exc::runtime_exc_t& e) { e.AddMarkedMessage(kText); }, show);
}

TEST(ExceptionsWithoutMemory, KeepTheirLinesWhenOneMoreCannotBeAdded)
{
    const auto lines = [](const exc::runtime_exc_t& e)
    {
        cnt::CBufWriter writer;
        e.WriteTo(writer);
        return WrittenBy(writer);
    };
    exc::runtime_exc_t longer = Exception();
    longer.AddMessage(kText);
    SweepChange(
        Exception(), lines(longer), [](exc::runtime_exc_t& e) { e.AddMessage(kText); }, lines);
}

TEST(ExceptionsWithoutMemory, AreTranslatedOrStayAsTheyWere)
{
    exc::runtime_exc_t translated("translated: It failed for a reason that is told at length.");
    translated.AddMarkedMessage("translated: And it was marked, at some length as well.");
    translated.GetTrace() = Exception().GetTrace();
    SweepChange(
        Exception(), FullText(translated),
        [](exc::runtime_exc_t& e)
        {
            upper_translator_t translator;
            e.Translate(translator);
        },
        FullText);
}

TEST(ExceptionsWithoutMemory, AreCopiedOrThrow)
{
    const exc::runtime_exc_t exception = Exception();
    boost::shared_ptr<exc::exc_base_t> clone;
    SweepAllocations({[&] { clone = exception.Clone(); },
                      [&]
                      {
                          const auto copy = std::exchange(clone, nullptr);
                          return copy != nullptr ? FullText(*copy) : "none";
                      },
                      kExceptionText, "none"});
}

TEST(ExceptionsWithoutMemory, AreThrownAgainOrReplacedByBadAlloc)
{
    const exc::runtime_exc_t exception = Exception();
    SweepCall(kExceptionText,
              [&]() -> std::string
              {
                  try
                  {
                      exception.Rethrow();
                  }
                  catch (const exc::runtime_exc_t& e)
                  {
                      return e.GetFullText();
                  }
                  return "nothing was thrown";
              });
}

TEST(ExceptionsWithoutMemory, GetContextOrAreReplacedByBadAlloc)
{
    SweepContext("the quick brown fox jumps over it" + std::string(kContextLines),
                 [] { throw exc::runtime_exc_t(kText); });
    SweepContext("the quick brown fox jumps over it" + std::string(kContextLines),
                 [] { throw std::runtime_error(kText); });
    SweepContext("No such file or directory" + std::string(kContextLines),
                 [] { throw boost::system::system_error(ENOENT, boost::system::system_category(), kText); });
}

TEST(ExceptionsWithoutMemory, AreWrittenOrThrow)
{
    const exc::runtime_exc_t exception = Exception();
    const std::string golden = [&]
    {
        cnt::CBufWriter writer;
        exception.WriteTo(writer);
        return WrittenBy(writer);
    }();
    std::string bytes;
    bytes.reserve(golden.size());
    SweepAllocations({[&]
                      {
                          bytes.clear();
                          cnt::CBufWriter writer;
                          exception.WriteTo(writer);
                          bytes.assign(writer.GetBuffer()->data(), writer.GetPosition());
                      },
                      [&] { return bytes; }, golden, ""});
}

TEST(ExceptionsWithoutMemory, AreReadOrStayAsTheyWere)
{
    cnt::CBufWriter writer;
    Exception().WriteTo(writer);
    const auto array = ArrayOf(WrittenBy(writer));
    SweepChange(
        exc::runtime_exc_t("What was there before the reading.", exc::error_code_t{5}),
        std::string(kExceptionText) + "7",
        [&](exc::runtime_exc_t& e)
        {
            CBufReader reader(array);
            e.ReadFrom(reader);
        },
        [](const exc::runtime_exc_t& e) { return FullText(e) + std::to_string(e.GetErrorCode()); });
}

TEST(ExceptionsWithoutMemory, DropAnEventWithAWarningAtMost)
{
    exc::exc_base_t exception(kText);
    exception.AddEvent(7, "an information that is not short");
    cnt::CBufWriter writer;
    exception.WriteTo(writer);
    const auto array = ArrayOf(WrittenBy(writer));
    boost::shared_ptr<lines_receiver_t> receiver;
    const auto new_receiver = [&]
    {
        receiver = boost::make_shared<lines_receiver_t>();
        logging::GetProcessLog()->set_receiver(receiver);
    };
    new_receiver();
    SweepAllocations({[&]
                      {
                          CBufReader reader(array);
                          exc::exc_base_t read(reader);
                      },
                      [&]
                      {
                          const std::string lines = WithoutHeads(receiver->text());
                          new_receiver();
                          return lines;
                      },
                      "       | WARN|Unexpected trace event: [7]. Info: an information that is not short.\n",
                      {},
                      true});
    logging::GetProcessLog()->set_receiver({});
}

TEST(GuidWithoutMemory, IsParsedOrThrows)
{
    SweepCall(kIdText, [] { return Guid::Parse("{00112233-4455-6677-8899-AABBCCDDEEFF}"); });
    SweepCall(kIdText, [] { return Guid::Parse(L"{00112233-4455-6677-8899-AABBCCDDEEFF}"); });
}

TEST(GuidWithoutMemory, BecomesTextOrThrows)
{
    const Guid id = Guid::Parse(kIdText);
    SweepCall(kIdText, [&] { return id.ToString(); });
    SweepCall(kIdText, [&] { return id.ToWString(); });
}

TEST(GuidWithoutMemory, IsGeneratedOrThrows)
{
    SweepCall("false", [] { return Guid::Generate().IsNull(); });
}

TEST(GuidWithoutMemory, IsCopiedToAnArrayOrLeavesIt)
{
    const Guid id = Guid::Parse(kIdText);
    const std::string bytes = Unhex("00112233445566778899aabbccddeeff");
    SweepChange(
        cnt::plain_array_t("ab", 2), bytes, [&](cnt::plain_array_t& array) { id.CopyTo(array); },
        BytesOf<cnt::plain_array_t>);
    SweepChange(
        cnt::secure_array_t("ab", 2), bytes, [&](cnt::secure_array_t& array) { id.CopyTo(array); },
        BytesOf<cnt::secure_array_t>);
}

TEST(DateWithoutMemory, BecomesTextOrThrows)
{
    const datetime::CDateTime date(1'700'000'000, true);
    SweepCall("2023-11-14 22:13:20", [&] { return date.ToString(datetime::CDateTime::kIsoFormat); });
    SweepCall("2023-11-14 22:13:20", [&] { return date.ToString(L"%Y-%m-%d %H:%M:%S"); });
}

// Whatever fails, the text is said to be what cannot be converted.
TEST(DateWithoutMemory, IsReadFromTextOrFailsAsForAnyReason)
{
    const auto sweep = [](const auto& text, const auto& format)
    {
        datetime::CDateTime date;
        swept_operation_t operation = {[&] { date = datetime::CDateTime::FromString(text, format); },
                                       [&] { return std::to_string(std::exchange(date, {}).GetSeconds()); },
                                       "1700000000", "0"};
        operation.other_failure = "Unable to convert string [2023-11-14 22:13:20] with date format "
                                  "[%Y-%m-%d %H:%M:%S] to DateTime.";
        SweepAllocations(operation);
    };
    sweep(std::string("2023-11-14 22:13:20"), std::string("%Y-%m-%d %H:%M:%S"));
    sweep(std::wstring(L"2023-11-14 22:13:20"), std::wstring(L"%Y-%m-%d %H:%M:%S"));
}

TEST(DateWithoutMemory, GivesItsMonthOrThrows)
{
    const datetime::CDateTime date(1'700'000'000, true);
    SweepCall("5 4",
              [&]
              {
                  return util::Format("%1 %2", date.GetMonthInfo().number_of_weeks,
                                      date.GetDaysOfMonth(datetime::day_of_week_t::kMonday).size());
              });
}

namespace
{

template <class Array>
void SweepArray()
{
    const auto show = [](const Array& array) { return std::to_string(array.size()) + BytesOf(array); };
    const Array before("ab", 2);
    SweepChange(
        before, "4ab" + std::string(2, '\0'), [](Array& array) { array.resize(4); }, show);
    SweepChange(
        before, "5abcde", [](Array& array) { array.append("cde", 3); }, show);
    SweepChange(
        before, "3cde", [](Array& array) { array.assign("cde", 3); }, show);
    SweepChange(
        before, "33" + kText, [](Array& array) { array = Array(kText.data(), kText.size()); }, show);
}

} // namespace

TEST(ArrayWithoutMemory, ChangesOrStaysAsItWas)
{
    SweepArray<cnt::plain_array_t>();
    SweepArray<cnt::secure_array_t>();
}

TEST(BufWriterWithoutMemory, WritesWholeValuesOrNothing)
{
    const std::string long_text(3 * cnt::CBufWriter::kGrowth, 'a');
    boost::shared_ptr<cnt::CBufWriter> writer = boost::make_shared<cnt::CBufWriter>();
    const auto sweep = [&](const std::string& expected, const std::function<void()>& act)
    {
        SweepAllocations({act,
                          [&]
                          {
                              std::string bytes = WrittenBy(*writer);
                              writer = boost::make_shared<cnt::CBufWriter>();
                              return bytes;
                          },
                          expected, ""});
    };
    sweep({"\x02\x00\x00\x00"
           "ab",
           6},
          [&] { writer->WriteString("ab"); });
    sweep(std::string("\x00\x00\x30\x00", 4) + long_text, [&] { writer->WriteString(long_text); });
    sweep({"\x02\x00\x00\x00"
           "ab",
           6},
          [&] { writer->WriteBlob(2, "ab"); });
    sweep("ab", [&] { writer->WriteRaw(2, "ab"); });
    sweep({"\x07\x00\x00\x00", 4}, [&] { writer->WriteInt32(7); });
    sweep({"\x02\x00\x00\x00"
           "ab",
           6},
          [&]
          {
              std::memcpy(writer->ReserveLength(8), "ab", 2);
              writer->FillLength(2);
          });
}

TEST(BufWriterWithoutMemory, IsCopiedOrThrows)
{
    cnt::CBufWriter writer;
    writer.WriteString(kText);
    SweepCall(WrittenBy(writer),
              [&]
              {
                  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): what is tested
                  const cnt::CBufWriter copy(writer);
                  return WrittenBy(copy);
              });
}

TEST(BufReaderWithoutMemory, ReadsOrThrows)
{
    cnt::CBufWriter writer;
    writer.WriteString(kText);
    const auto array = ArrayOf(WrittenBy(writer));
    SweepCall(kText, [&] { return CBufReader(array).ReadString(); });
    SweepCall(kText,
              [&]
              {
                  cnt::plain_array_t blob;
                  CBufReader(array).ReadBlob(blob);
                  return blob;
              });
    SweepCall(kText,
              [&]
              {
                  cnt::secure_array_t blob;
                  CBufReader(array).ReadBlob(blob);
                  return blob;
              });
}

TEST(BufReaderWithoutMemory, FailsAsItDoesOrThrowsBadAlloc)
{
    const auto array = ArrayOf("ab");
    SweepCall("Out of the buffer, buffer size '2', struct size '4', buffer pointer '0'.\n"
              "Failed to extract integer value from buffer.",
              [&]() -> std::string
              {
                  try
                  {
                      CBufReader(array).ReadUint32();
                  }
                  catch (const exc::runtime_exc_t& e)
                  {
                      return TextUnlessOfMemory(e);
                  }
                  return "nothing was thrown";
              });
}

TEST(AgentOptionsWithoutMemory, AreBuiltOrThrow)
{
    SweepCall("SOFTWARE\\Nelvo\\Nelvo Suite", [] { return CAgentOptions().GetText_01(); });
}
