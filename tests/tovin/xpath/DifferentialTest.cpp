// Random queries over random trees, answered here and by libxml2.
//
// Where the two differ on purpose, the generator stays away or the comparison looks aside:
// - Names fold ASCII case here: the trees use lower case only.
// - Texts of elements are values here and no nodes: the documents hold none, and text() is left out.
// - A declaration of a namespace is an attribute here, and prefixes stand for nothing: there are none.
// - The document root is in no result here: it is taken out of the other's.
// - Numbers become texts with all their digits and no exponent here: numbers are compared as numbers.
// - A text with an exponent is no number here, as the recommendation has it.
// - following:: of an attribute begins with the children of its element here, as the recommendation defines
// it.
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <cmath>
#include <fstream>
#include <memory>
#include <random>
#include <set>

#include "tests/tovin/xpath/Trees.h"

namespace {

using namespace testsupport;

struct Free {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
  void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

std::string placeOf(const xmlNode* node) {
  std::string place = "/";
  for (; node && node->type == XML_ELEMENT_NODE; node = node->parent) {
    int position = 1;
    for (const xmlNode* before = node->prev; before; before = before->prev) ++position;
    place = "/*[" + std::to_string(position) + "]" + place;
  }
  return place;
}

std::string nameOf(const xmlNode& node) {
  const std::string name = reinterpret_cast<const char*>(node.name);
  return node.ns ? reinterpret_cast<const char*>(node.ns->prefix) + (":" + name) : name;
}

// A tree in both representations.
class Pair {
 public:
  explicit Pair(const std::string& xml)
      : tree_(treeOf(xml)),
        document_(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", nullptr, XML_PARSE_HUGE)),
        context_(xmlXPathNewContext(document_.get())) {
    context_->contextSize = context_->proximityPosition = 1;
    collect(*tree_, xmlDocGetRootElement(document_.get()));
  }
  size_t getSize() const { return nodes_.size(); }

  void expectSame(const std::string& query, size_t at) {
    SCOPED_TRACE(query);
    context_->node = peers_[at];
    // In parentheses, because for plain paths libxml2 has a second evaluator, which loses the node of ".//.".
    const std::string enclosed = "(" + query + ")";
    const std::unique_ptr<xmlXPathObject, Free> other(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(enclosed.c_str()), context_.get()));
    ASSERT_TRUE(other);
    const std::wstring wide = tovin::utf8ToWide(query);
    try {
      expectSameResult(wide.c_str(), *nodes_[at], *other);
    } catch (const tovin::Exception& e) {
      ADD_FAILURE() << e.what();
    }
  }

 private:
  void collect(const tovin::iNode& node, xmlNode* peer) {
    nodes_.push_back(&node);
    peers_.push_back(peer);
    xmlNode* child = peer->children;
    for (unsigned i = 0; i < node.getNumberOfChildren(); ++i, child = child->next)
      collect(*node.getChildAt(i), child);
  }

  void expectSameResult(const wchar_t* query, const tovin::iNode& node, const xmlXPathObject& other) {
    if (other.type == XPATH_NODESET) return expectSameNodes(query, node, other.nodesetval);
    if (other.type == XPATH_BOOLEAN) {
      bool truth = false;
      node.query(query, 0, truth);
      EXPECT_EQ(truth, other.boolval != 0);
    } else if (other.type == XPATH_STRING) {
      EXPECT_EQ(textOf(node, query), reinterpret_cast<const char*>(other.stringval));
    } else {
      expectSameNumber(tovin::utf8ToWide(textOf(node, query)), other.floatval);
    }
  }

  static void expectSameNumber(const std::wstring& text, double other) {
    if (std::isnan(other) || std::isinf(other)) {
      EXPECT_EQ(text, std::isnan(other) ? L"NaN" : other < 0 ? L"-Infinity" : L"Infinity");
    } else {
      EXPECT_EQ(std::wcstod(text.c_str(), nullptr), other);
    }
  }

  void expectSameNodes(const wchar_t* query, const tovin::iNode& node, const xmlNodeSet* set) {
    Places elements, attributes;
    for (int i = 0; set && i < set->nodeNr; ++i) {
      const xmlNode* each = set->nodeTab[i];
      if (each->type == XML_ELEMENT_NODE) elements.push_back(::placeOf(each));
      if (each->type == XML_ATTRIBUTE_NODE) {
        attributes.push_back(::placeOf(each->parent) + "@" + nameOf(*each));
      }
    }
    EXPECT_EQ(select(node, query, tovin::iXPathParser::elements), elements);
    tovin::PropertyReferenceSet properties;
    node.query(query, 0, properties);
    Places found;
    for (size_t i = 0; i < properties.getSize(); ++i) {
      const auto* owner = tovin::seek<tovin::iNode>(properties[i]->getParent()->findOwner());
      found.push_back(testsupport::placeOf(*owner) + "@" + tovin::wideToUtf8(properties[i]->getName()));
    }
    EXPECT_EQ(found, attributes);
  }

  tovin::Ptr<tovin::iNode> tree_;
  std::unique_ptr<xmlDoc, Free> document_;
  std::unique_ptr<xmlXPathContext, Free> context_;
  std::vector<const tovin::iNode*> nodes_;
  std::vector<xmlNode*> peers_;
};

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  std::string tree(int depth = 0) {
    const std::string name = one({"a", "b", "c", "d-d"});
    std::string xml = "<" + name;
    for (const char* attribute : {"x", "y", "xml:lang"}) {
      if (chance(3))
        xml += std::string(" ") + attribute + "='" + one({"1", "2", "-3.5", "en", "en-us", "b", ""}) + "'";
    }
    xml += ">";
    for (size_t i = depth > 5 ? 0 : below(depth == 0 ? 6 : 4); i > 0; --i) xml += tree(depth + 1);
    return xml + "</" + name + ">";
  }

  std::string expression(int depth) {
    switch (below(depth > 2 ? 3 : 9)) {
      case 0:
      case 1:
        return path(depth);
      case 2:
        return one({"1", "2", "0.5", "'b'", "'en'", "''", "true()", "position()", "last()", "-1", ".", "@x"});
      case 3:
        return "(" + expression(depth + 1) + ") " +
               one({"=", "!=", "<", "<=", ">", ">=", "+", "-", "*", "div", "mod", "and", "or"}) + " (" +
               expression(depth + 1) + ")";
      case 4:
        return path(depth) + " | " + path(depth);
      case 5:
        return one({"count", "sum", "name", "local-name"}) + "(" + path(depth) + ")";
      case 6:
        return one({"string", "number", "boolean", "not", "string-length", "normalize-space", "floor",
                    "ceiling", "round", "lang"}) +
               "(" + expression(depth + 1) + ")";
      case 7:
        return one({"concat", "contains", "starts-with", "substring-before", "substring-after"}) + "(" +
               expression(depth + 1) + ", " + expression(depth + 1) + ")";
      default:
        return "(" + path(depth) + ")" + predicates(depth) + "/" + relative(depth);
    }
  }

 private:
  std::string path(int depth) {
    const std::string start = one({"", "", "/", "//", ".//", "../"});
    return start + relative(depth);
  }

  std::string relative(int depth) {
    std::string text = step(depth);
    while (chance(2)) text += one({"/", "/", "//"}) + step(depth);
    return text;
  }

  std::string step(int depth) {
    if (chance(12)) return one({".", ".."});
    if (chance(6)) return one({"@x", "@*", "@y", "@node()", "attribute::x"}) + predicates(depth);
    const std::string axis =
        chance(2)
            ? ""
            : one({"ancestor", "ancestor-or-self", "child", "descendant", "descendant-or-self", "following",
                   "following-sibling", "parent", "preceding", "preceding-sibling", "self"}) +
                  "::";
    return axis + one({"a", "b", "c", "d-d", "*", "*", "node()"}) + predicates(depth);
  }

  std::string predicates(int depth) {
    std::string text;
    while (depth < 3 && chance(3)) {
      text += "[" +
              (chance(2) ? one({"1", "2", "3", "last()", "position() > 1", "@x", "@y = '1'", "last() - 1"})
                         : expression(depth + 1)) +
              "]";
    }
    return text;
  }

  size_t below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random_); }
  bool chance(size_t in) { return below(in) == 0; }
  std::string one(const std::vector<const char*>& choices) { return choices[below(choices.size())]; }

  std::mt19937 random_;
};

void passOver(void*, const char*, ...) {}

// Whether the query may step from attributes to what follows.
bool asksBehindAttributes(const std::string& query) {
  return query.find("following::") != query.npos &&
         (query.find('@') != query.npos || query.find("attribute::") != query.npos);
}

TEST(QueriesAgainstLibxml2, AgreeOnGeneratedTreesAndQueries) {
  xmlSetGenericErrorFunc(nullptr, passOver);
  std::set<std::string> asked;
  for (unsigned seed = 0; seed < 40 && !HasFailure(); ++seed) {
    Generator generator(seed);
    std::string xml = generator.tree();
    SCOPED_TRACE(xml);
    Pair pair(xml);
    for (int i = 0; i < 60; ++i) {
      const std::string query = generator.expression(0);
      if (asksBehindAttributes(query)) continue;
      pair.expectSame(query, static_cast<size_t>(i * 7) % pair.getSize());
      asked.insert(query);
    }
  }
  EXPECT_GT(asked.size(), 500u);
}

TEST(QueriesAgainstLibxml2, AgreeOnTheExamplesOfTheRecommendationAndOfOurGuide) {
  for (const char* name : {"recommendation.txt", "guide.txt"}) {
    std::ifstream in(std::string(ZTB_TEST_DATA "/xpath/") + name);
    std::unique_ptr<Pair> pair;
    for (std::string line; std::getline(in, line);) {
      if (line[0] == '#') continue;
      if (!pair) {
        pair = std::make_unique<Pair>(line);
        continue;
      }
      for (size_t at = 0; at < pair->getSize(); ++at) pair->expectSame(line, at);
    }
    EXPECT_TRUE(pair) << name;
  }
}

}  // namespace
