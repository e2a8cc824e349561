// What the command line makes of its arguments.
#include "tools/orvctl/command_line.h"

#include <gtest/gtest.h>

#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

Options Parse(std::vector<std::string> arguments) {
  const ParseResult result = ParseCommandLine(std::move(arguments));
  EXPECT_TRUE(result.options) << result.errors;
  return result.options.value_or(Options());
}

TEST(CommandLine, EveryCommandIsUnderstood) {
  struct Case {
    std::vector<std::string> arguments;
    Command command;
  };
  const Case cases[] = {{{"profile", "list"}, Command::kProfileList},
                        {{"profile", "create", "P"}, Command::kProfileCreate},
                        {{"profile", "delete", "P"}, Command::kProfileDelete},
                        {{"profile", "copy", "P", "Q"}, Command::kProfileCopy},
                        {{"profile", "rename", "P", "Q"}, Command::kProfileRename},
                        {{"profile", "default"}, Command::kProfileDefault},
                        {{"profile", "configure", "P"}, Command::kProfileConfigure},
                        {{"service", "list", "P"}, Command::kServiceList},
                        {{"service", "available"}, Command::kServiceAvailable},
                        {{"service", "add", "P", "S"}, Command::kServiceAdd},
                        {{"service", "remove", "P", "S"}, Command::kServiceRemove},
                        {{"service", "set", "P", "--dialog"}, Command::kServiceSet},
                        {{"book", "tree", "P"}, Command::kBookTree},
                        {{"book", "list", "P"}, Command::kBookList},
                        {{"book", "show", "P", "E"}, Command::kBookShow},
                        {{"book", "expand", "P", "--first"}, Command::kBookExpand},
                        {{"pick", "P"}, Command::kPick}};
  for (const Case& c : cases) EXPECT_EQ(Parse(c.arguments).command, c.command) << c.arguments.back();
}

TEST(CommandLine, GlobalOptionsMayStandAnywhere) {
  using Arguments = std::vector<std::string>;
  for (const Arguments& arguments : {Arguments{"--json", "--library", "xhtabb.dll", "book", "list", "-"},
                                     Arguments{"book", "list", "-", "--json", "--library=xhtabb.dll"}}) {
    const Options options = Parse(arguments);
    EXPECT_TRUE(options.json);
    EXPECT_EQ(options.library, "xhtabb.dll");
    EXPECT_EQ(options.profile, "-");
  }
}

TEST(CommandLine, ValuesAreTakenAsTheyStand) {
  const Options set = Parse({"service", "set", "P", "S", "--config", "/home/a b.vcf", "--property",
                             "0x6600001F=a=b, c", "--property", "805371935=x"});
  EXPECT_EQ(set.service, "S");
  EXPECT_EQ(set.config, "/home/a b.vcf");
  EXPECT_EQ(set.properties, (std::vector<std::string>{"0x6600001F=a=b, c", "805371935=x"}));
  EXPECT_EQ(Parse({"service", "add", "P", "S", "--config", ""}).config, "");
  EXPECT_EQ(Parse({"service", "add", "P", "S"}).config, std::nullopt);
  EXPECT_EQ(Parse({"profile", "create", "B\xC3\xBCro \xE6\x9D\xB1"}).profile, "B\xC3\xBCro \xE6\x9D\xB1");
  EXPECT_EQ(Parse({"profile", "delete", "--", "--json"}).profile, "--json");
}

TEST(CommandLine, MisuseIsToldApartFromHelp) {
  const std::vector<std::string> misuses[] = {
      {},
      {"profile"},
      {"profil", "list"},
      {"profile", "list", "surplus"},
      {"profile", "default", "P", "--none"},
      {"service", "set", "P"},
      {"service", "set", "P", "--property", "0x6600001F"},
      {"service", "set", "P", "--property", "PR_NULL=x"},
      {"book", "show", "P"},
      {"book", "show", "P", "E", "--first"},
      {"--library", "..\\other.dll", "profile", "list"},
      {"--library", "c:other.dll", "profile", "list"},
      {"profile", "list", "book", "tree", "P"},
  };
  for (const auto& arguments : misuses) {
    const ParseResult result = ParseCommandLine(arguments);
    SCOPED_TRACE(testing::PrintToString(arguments));
    EXPECT_FALSE(result.options);
    EXPECT_EQ(result.exitCode, kUsage);
    EXPECT_TRUE(result.output.empty());
    EXPECT_FALSE(result.errors.empty());
  }
  EXPECT_NE(ParseCommandLine({"profil", "list"}).errors.find("'profil'"), std::string::npos);
  const ParseResult help = ParseCommandLine({"book", "show", "--help"});
  EXPECT_FALSE(help.options);
  EXPECT_EQ(help.exitCode, kSuccess);
  EXPECT_NE(help.output.find("Exit codes"), std::string::npos);
  EXPECT_TRUE(help.errors.empty());
}

}  // namespace
}  // namespace orvctl
