// Tests of tools/log_application/web/page_files.cpp, and of rules for the page's files.
#include "tools/log_application/web/page_files.h"

#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "tools/log_application/web/token.h"

namespace {

using log_application::findPageFile;

TEST(PageFilesTest, HaveTheTypeThatABrowserNeeds) {
    EXPECT_EQ(findPageFile("")->type, "text/html; charset=utf-8");
    EXPECT_EQ(findPageFile("index.html")->text, findPageFile("")->text);
    EXPECT_EQ(findPageFile("app.js")->type, "text/javascript; charset=utf-8");
    EXPECT_EQ(findPageFile("page.css")->type, "text/css; charset=utf-8");
    EXPECT_EQ(findPageFile("icon.svg")->type, "image/svg+xml");
    EXPECT_TRUE(findPageFile("")->text.starts_with("<!doctype html>"));
    EXPECT_TRUE(findPageFile("")->text.ends_with("</html>\n"));
}

TEST(PageFilesTest, OtherNamesAreUnknown) {
    for (const char* const name : {"x", "../app.js", "APP.JS", "app.js/", "page/app.js"}) {
        EXPECT_FALSE(findPageFile(name)) << name;
    }
}

TEST(PageFilesTest, ScriptsNeverMakeMarkupOfTexts) {
    for (const char* const name : {"app.js", "levels.js", "list.js", "strip.js"}) {
        const std::string text(findPageFile(name)->text);
        for (const char* const word : {"innerHTML", "outerHTML", "insertAdjacentHTML", "eval(",
                                       "document.write", "DOMParser", "new Function"}) {
            EXPECT_EQ(text.find(word), std::string::npos) << name << " has " << word;
        }
    }
}

TEST(PageFilesTest, ThePageHasNoScriptOrStyleOfItsOwnAndLoadsNothingFromElsewhere) {
    const std::string text(findPageFile("")->text);
    for (const char* const word : {"<style", " style=", " on", "://"}) {
        if (std::string(word) == " on") {
            EXPECT_FALSE(std::regex_search(text, std::regex(" on[a-z]+=")));
        } else {
            EXPECT_EQ(text.find(word), std::string::npos) << word;
        }
    }
    EXPECT_FALSE(std::regex_search(text, std::regex("<script[^>]*>[^<]")));
}

TEST(RandomToken, Has128BitsAndIsNewEachTime) {
    const std::string one = log_application::randomToken();
    EXPECT_TRUE(std::regex_match(one, std::regex("[0-9a-f]{32}"))) << one;
    EXPECT_NE(one, log_application::randomToken());
}

}  // namespace
