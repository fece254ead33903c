// Writing and reading a tree of nodes with five mixed properties each, beside two peers with the same
// content.
#include <benchmark/benchmark.h>

#include <cstring>
#include <msgpack.hpp>
#include <string>
#include <vector>

#include "record.pb.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

constexpr int fanOut = 46;  // 1 + 46 + 46² + … : three levels below the root give about 100,000 nodes

// The content, as each of the three models takes it.
struct Sample {
  std::string text;
  double real;
  int integer;
  std::vector<std::string> texts;
  std::vector<int> integers;
};

Sample sampleOf(int serial) {
  return {
      "value " + std::to_string(serial), serial * 0.37, serial * 7919, {"red", "green"}, {serial, 5, -300}};
}

constexpr const char* names[] = {"title", "weight", "serial", "colours", "counts"};

CBaseNode* makeNode(int depth, int& serial) {
  const Sample sample = sampleOf(serial++);
  CBaseNode* node = CBaseNode::allocate();
  node->setName(L"item");
  tovin::iPropertyCollection* properties = node->getProperties();
  properties->define(L"title", tovin::utf8ToWide(sample.text).c_str(), 0);
  properties->define(L"weight", sample.real, 0);
  properties->define(L"serial", tovin::IntegerValue(sample.integer), 0);
  tovin::StringArrayValue texts;
  for (const std::string& text : sample.texts) texts.add(tovin::utf8ToWide(text).c_str());
  properties->define(L"colours", texts, 0);
  tovin::IntegerArrayValue integers;
  for (int integer : sample.integers) integers.add(integer);
  properties->define(L"counts", integers, 0);
  for (int i = 0; depth > 0 && i < fanOut; ++i) node->appendChild(makeNode(depth - 1, serial));
  return node;
}

void fillProperty(bench::Property& property, const char* name, int valueClass) {
  property.set_name(name);
  property.set_value_class(valueClass);
}

void fillNode(bench::Node& node, int depth, int& serial) {
  const Sample sample = sampleOf(serial++);
  node.set_class_name("DraVolin.data.BaseNode");
  node.set_name("item");
  for (int i = 0; i < 5; ++i) fillProperty(*node.add_property(), names[i], 0x12345678 + i);
  node.mutable_property(0)->set_text(sample.text);
  node.mutable_property(1)->set_real(sample.real);
  node.mutable_property(2)->set_integer(sample.integer);
  for (const std::string& text : sample.texts) node.mutable_property(3)->mutable_texts()->add_item(text);
  for (int integer : sample.integers) node.mutable_property(4)->mutable_integers()->add_item(integer);
  for (int i = 0; depth > 0 && i < fanOut; ++i) fillNode(*node.add_child(), depth - 1, serial);
}

// The same content for msgpack: structures of containers.
struct PackedProperty {
  std::string name;
  int valueClass = 0;
  std::string text;
  double real = 0;
  int integer = 0;
  std::vector<std::string> texts;
  std::vector<int> integers;
  unsigned flags = 0;
  MSGPACK_DEFINE(name, valueClass, text, real, integer, texts, integers, flags)
};

struct PackedNode {
  std::string className;
  std::string name;
  std::vector<PackedProperty> properties;
  std::vector<PackedNode> children;
  MSGPACK_DEFINE(className, name, properties, children)
};

void fillNode(PackedNode& node, int depth, int& serial) {
  const Sample sample = sampleOf(serial++);
  node.className = "DraVolin.data.BaseNode";
  node.name = "item";
  node.properties.resize(5);
  for (size_t i = 0; i < 5; ++i) {
    node.properties[i].name = names[i];
    node.properties[i].valueClass = 0x12345678 + static_cast<int>(i);
  }
  node.properties[0].text = sample.text;
  node.properties[1].real = sample.real;
  node.properties[2].integer = sample.integer;
  node.properties[3].texts = sample.texts;
  node.properties[4].integers = sample.integers;
  node.children.resize(depth > 0 ? fanOut : 0);
  for (PackedNode& child : node.children) fillNode(child, depth - 1, serial);
}

struct Tree {
  Tree() { root = tovin::Ptr<CBaseNode>(makeNode(3, nodes)); }
  int nodes = 0;
  tovin::Ptr<CBaseNode> root;
};

void report(benchmark::State& state, int nodes, size_t bytes) {
  state.counters["nodes/s"] =
      benchmark::Counter(static_cast<double>(nodes), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["bytes"] = static_cast<double>(bytes);
}

void RecordWrite(benchmark::State& state) {
  const Tree tree;
  size_t bytes = 0;
  for (auto _ : state) {
    ztMemoryByteOutputStream out;
    tree.root->serialize(out);
    bytes = out.GetSize();
  }
  report(state, tree.nodes, bytes);
}

void RecordWriteProtobuf(benchmark::State& state) {
  bench::Node root;
  int nodes = 0;
  fillNode(root, 3, nodes);
  std::string out;
  for (auto _ : state) {
    out.clear();
    root.SerializeToString(&out);
  }
  report(state, nodes, out.size());
}

void RecordWriteMsgpack(benchmark::State& state) {
  PackedNode root;
  int nodes = 0;
  fillNode(root, 3, nodes);
  size_t bytes = 0;
  for (auto _ : state) {
    msgpack::sbuffer out;
    msgpack::pack(out, root);
    bytes = out.size();
  }
  report(state, nodes, bytes);
}

void RecordRead(benchmark::State& state) {
  int nodes = 0;
  ztMemoryByteOutputStream out;
  {
    const Tree tree;
    nodes = tree.nodes;
    tree.root->serialize(out);
  }
  for (auto _ : state) {
    const tovin::Ptr<CBaseNode> root(CBaseNode::allocate());
    ztMemoryByteInputStream in(out.GetBytes(), out.GetSize());
    root->deserialize(in);
  }
  report(state, nodes, out.GetSize());
}

void RecordReadProtobuf(benchmark::State& state) {
  std::string bytes;
  int nodes = 0;
  {
    bench::Node root;
    fillNode(root, 3, nodes);
    root.SerializeToString(&bytes);
  }
  for (auto _ : state) {
    bench::Node root;
    benchmark::DoNotOptimize(root.ParseFromString(bytes));
  }
  report(state, nodes, bytes.size());
}

void RecordReadMsgpack(benchmark::State& state) {
  msgpack::sbuffer out;
  int nodes = 0;
  {
    PackedNode root;
    fillNode(root, 3, nodes);
    msgpack::pack(out, root);
  }
  for (auto _ : state) {
    PackedNode root;
    msgpack::unpack(out.data(), out.size()).get().convert(root);
    benchmark::DoNotOptimize(root);
  }
  report(state, nodes, out.size());
}

// The limit: the record's bytes moved once.
void RecordMemcpy(benchmark::State& state) {
  const Tree tree;
  ztMemoryByteOutputStream out;
  tree.root->serialize(out);
  std::vector<unsigned char> copy(out.GetSize());
  for (auto _ : state) {
    std::memcpy(copy.data(), out.GetBytes(), out.GetSize());
    benchmark::ClobberMemory();
  }
  report(state, tree.nodes, out.GetSize());
}

BENCHMARK(RecordWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(RecordWriteProtobuf)->Unit(benchmark::kMillisecond);
BENCHMARK(RecordWriteMsgpack)->Unit(benchmark::kMillisecond);
BENCHMARK(RecordRead)->Unit(benchmark::kMillisecond);
BENCHMARK(RecordReadProtobuf)->Unit(benchmark::kMillisecond);
BENCHMARK(RecordReadMsgpack)->Unit(benchmark::kMillisecond);
BENCHMARK(RecordMemcpy)->Unit(benchmark::kMillisecond);

}  // namespace
