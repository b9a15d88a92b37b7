#include "tests/e2e/LocalTest.hpp"

namespace test {

std::vector<OddName> oddNames() {
    std::vector<OddName> names;
    for (const std::string utf8 :
         {"a", "100% done?.txt", "%2F", "it's \"quoted\"", "\\", "a\\b", "C:", "*?[a]{b}~",
          "$HOME `id` $(id)", "-rf", "--", "...", "..a", ".hidden", "trailing.", " leading", "trailing ", " ",
          "new\nline", "tab\t", "\x01\x1b[31m\x7f", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
          "\xEF\xBB\xBF"
          "bom",
          "\xEF\xBF\xBD",
          "\xE2\x80\xAE"
          "rtl",
          "\xEF\xBF\xBF",
          // The same letter composed and as a base with a mark: two names, both kept as written.
          "\xC3\xA9", "e\xCC\x81"}) {
        names.push_back({utf8, text(utf8)});
    }
    names.push_back({std::string(255, 'x'), opc::ustring(255, u'x')});
    // What is not UTF-8 stands byte by byte as U+DC80..U+DCFF: Latin 1, a cut and an overlong sequence, a
    // surrogate.
    names.push_back({"caf\xE9", u"caf\xDCE9"});
    names.push_back({"\xFF\xFE", u"\xDCFF\xDCFE"});
    names.push_back({"\xE2\x82", u"\xDCE2\xDC82"});
    names.push_back({"\xC0\xAF", u"\xDCC0\xDCAF"});
    names.push_back({"\xED\xA0\x80", u"\xDCED\xDCA0\xDC80"});
    names.push_back({std::string(255, '\x80'), opc::ustring(255, char16_t(0xDC80))});
    return names;
}

}  // namespace test
