#include "cli/content/JsonTree.h"

#include <xxhash.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <nlohmann/json.hpp>

#include "cli/terminal/Counts.h"

namespace {

using Json = nlohmann::json;

std::uint64_t hashOf(std::string_view text, std::uint64_t seed) {
  return XXH3_64bits_withSeed(text.data(), text.size(), seed);
}

std::uint64_t combine(std::uint64_t a, std::uint64_t b) {
  const std::array<std::uint64_t, 2> both = {a, b};
  return XXH3_64bits(both.data(), sizeof both);
}

enum Seed : std::uint64_t { kLiteral = 1, kNumber, kString, kKey, kArray, kObject, kEnd };

/// Tells its owner how far the parser has read, which the parser itself does not.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* at, const char** position) : m_at(at), m_position(position) {}
  reference operator*() const { return *m_at; }
  CountingIterator& operator++() {
    *m_position = ++m_at;
    return *this;
  }
  bool operator==(const CountingIterator& other) const { return m_at == other.m_at; }
  bool operator!=(const CountingIterator& other) const { return m_at != other.m_at; }

 private:
  const char* m_at;
  const char** m_position;
};

/// What the parser says is wrong, without its prefix. It quotes what it has read, however long.
std::string reasonIn(const std::string& message) {
  constexpr std::size_t kMost = 240;
  const std::size_t prefix = message.find("] ");
  const std::size_t begin = prefix == std::string::npos ? 0 : prefix + 2;
  return message.substr(begin, kMost) + (message.size() - begin > kMost ? "\u2026" : "");
}

}  // namespace

/// Makes nodes of what the parser finds.
class JsonTree::Builder : public nlohmann::json_sax<Json> {
 public:
  explicit Builder(JsonTree& tree)
      : m_tree(tree), m_position(tree.m_text.data()), m_last(tree.m_text.data()) {}

  const char** position() { return &m_position; }

  bool null() override { return addLiteral(); }
  bool boolean(bool) override { return addLiteral(); }
  bool number_integer(number_integer_t) override { return addNumber(); }
  bool number_unsigned(number_unsigned_t) override { return addNumber(); }
  bool number_float(number_float_t, const string_t&) override { return addNumber(); }
  bool string(string_t& value) override { return addScalar(hashOf(value, kString), m_position); }
  bool binary(binary_t&) override { return false; }

  bool key(string_t& value) override {
    m_keyBegin = offset(skipToToken());
    m_keyHash = hashOf(value, kKey);
    addToOrder(m_keyHash);
    m_last = m_position;
    return true;
  }

  bool start_object(std::size_t) override { return open(Type::Object); }
  bool start_array(std::size_t) override { return open(Type::Array); }
  bool end_object() override {
    noteDuplicates();
    return close(kObject);
  }
  bool end_array() override { return close(kArray); }

  bool parse_error(std::size_t, const std::string&, const Json::exception& error) override {
    m_tree.m_problem = "cannot be read as JSON: " + reasonIn(error.what());
    return false;
  }

 private:
  std::uint32_t offset(const char* at) const {
    return static_cast<std::uint32_t>(at - m_tree.m_text.data());
  }

  /// Where the token starts that the parser has just read: behind the last one and what may stand
  /// between two.
  const char* skipToToken() const {
    const char* const end = m_tree.m_text.data() + m_tree.m_text.size();
    return std::find_if_not(m_last, end, [](char c) {
      return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == ',' || c == ':' ||
             static_cast<unsigned char>(c) >= 0x80;  // a byte-order mark
    });
  }

  bool addLiteral() {
    const char* const begin = skipToToken();
    const std::string_view text(begin, *begin == 'f' ? 5 : 4);
    return addScalar(hashOf(text, kLiteral), begin + text.size());
  }

  /// The parser has read one byte more than the number.
  bool addNumber() {
    const char* const begin = skipToToken();
    const char* const textEnd = m_tree.m_text.data() + m_tree.m_text.size();
    const char* const end = std::find_if_not(begin, textEnd, [](char c) {
      return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
    });
    const std::string_view text(begin, static_cast<std::size_t>(end - begin));
    return addScalar(hashOf(text, kNumber), end);
  }

  bool addScalar(std::uint64_t hash, const char* end) {
    Node* const node = addNode(Type::Scalar);
    if (node == nullptr) {
      return false;
    }
    node->hash = hash;
    node->textEnd = offset(end);
    node->end = static_cast<std::uint32_t>(m_tree.m_nodes.size()) & kIndexMask;
    addToOrder(hash);
    addToParent(*node);
    m_last = end;
    return true;
  }

  bool open(Type type) {
    if (addNode(type) == nullptr) {
      return false;
    }
    addToOrder(type == Type::Array ? kArray : kObject);
    m_open.push_back(static_cast<std::uint32_t>(m_tree.m_nodes.size() - 1));
    m_last = m_position;
    return true;
  }

  bool close(std::uint64_t seed) {
    Node& node = m_tree.m_nodes[m_open.back()];
    m_open.pop_back();
    node.textEnd = offset(m_position);
    node.end = static_cast<std::uint32_t>(m_tree.m_nodes.size()) & kIndexMask;
    node.hash = combine(node.hash, seed);
    addToOrder(kEnd);
    addToParent(node);
    m_last = m_position;
    return true;
  }

  Node* addNode(Type type) {
    if (m_tree.m_nodes.size() == kMostNodes) {
      m_tree.m_problem = "has more than " + withThousands(kMostNodes) + " values";
      return nullptr;
    }
    Node& node = m_tree.m_nodes.emplace_back();
    node.textBegin = offset(skipToToken());
    node.type = static_cast<std::uint32_t>(type) & 3U;
    node.keyHash = m_keyHash;
    node.keyBegin = m_keyBegin;
    m_keyHash = 0;
    return &node;
  }

  /// Elements count in their order, members in any.
  void addToParent(const Node& node) {
    if (m_open.empty()) {
      return;
    }
    Node& parent = m_tree.m_nodes[m_open.back()];
    parent.hash = static_cast<Type>(parent.type) == Type::Array
                      ? combine(parent.hash, node.hash)
                      : parent.hash + combine(node.keyHash, node.hash);
  }

  void addToOrder(std::uint64_t hash) {
    m_tree.m_orderedHash = combine(m_tree.m_orderedHash, hash);
  }

  void noteDuplicates() {
    if (m_tree.m_duplicate != 0) {
      return;
    }
    m_names.clear();
    const auto end = static_cast<std::uint32_t>(m_tree.m_nodes.size());
    for (std::uint32_t child = m_open.back() + 1; child < end; child = m_tree.m_nodes[child].end) {
      m_names.emplace_back(m_tree.m_nodes[child].keyHash, child);
    }
    std::sort(m_names.begin(), m_names.end());
    const auto twin =
        std::adjacent_find(m_names.begin(), m_names.end(),
                           [](const auto& a, const auto& b) { return a.first == b.first; });
    if (twin != m_names.end()) {
      m_tree.m_duplicate = std::next(twin)->second;
    }
  }

  static constexpr std::uint32_t kIndexMask = (1U << 30) - 1;

  JsonTree& m_tree;
  const char* m_position;  ///< how far the parser has read
  const char* m_last;      ///< end of the last token that made a node, opened, closed or named one
  std::uint64_t m_keyHash = 0;
  std::uint32_t m_keyBegin = 0;
  std::vector<std::uint32_t> m_open;
  std::vector<std::pair<std::uint64_t, std::uint32_t>> m_names;  ///< of one object
};

JsonTree::JsonTree(std::string_view text) : m_text(text) {
  if (text.size() > kMostBytes) {
    m_problem = "is longer than " + withThousands(kMostBytes) + " bytes";
    return;
  }
  Builder builder(*this);
  const char* const end = text.data() + text.size();
  Json::sax_parse(CountingIterator(text.data(), builder.position()),
                  CountingIterator(end, builder.position()), &builder);
}

std::vector<std::uint32_t> JsonTree::childrenOf(std::uint32_t index) const {
  std::vector<std::uint32_t> children;
  for (std::uint32_t child = index + 1; child < m_nodes[index].end; child = m_nodes[child].end) {
    children.push_back(child);
  }
  return children;
}

std::string JsonTree::compactTextOf(std::uint32_t index) const {
  const Node& node = m_nodes[index];
  std::string compact;
  bool isInString = false;
  for (std::size_t i = node.textBegin; i < node.textEnd; ++i) {
    const char c = m_text[i];
    if (isInString && c == '\\') {
      compact += c;
      compact += m_text[++i];
      continue;
    }
    isInString = isInString != (c == '"');
    if (isInString || (c != ' ' && c != '\t' && c != '\n' && c != '\r')) {
      compact += c;
    }
  }
  return compact;
}

std::string_view JsonTree::keyOf(std::uint32_t index) const {
  const std::size_t begin = m_nodes[index].keyBegin;
  std::size_t end = begin + 1;
  while (m_text[end] != '"') {
    end += m_text[end] == '\\' ? 2 : 1;
  }
  return m_text.substr(begin, end + 1 - begin);
}

std::uint64_t JsonTree::lineOf(std::uint32_t index) const {
  const std::size_t at = m_nodes[index].textBegin;
  const char* const text = m_text.data();
  if (at < m_lineKnownAt) {
    m_line -= static_cast<std::uint64_t>(std::count(text + at, text + m_lineKnownAt, '\n'));
  } else {
    m_line += static_cast<std::uint64_t>(std::count(text + m_lineKnownAt, text + at, '\n'));
  }
  m_lineKnownAt = at;
  return m_line;
}
