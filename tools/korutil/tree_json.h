#pragma once
// Parameter trees as JSON.
//
// A node is {"id":n,"type":T,...} with, for
//   long      "value": a whole number of 32 bits
//   double    "value": a number, or "NaN", "Infinity", "-Infinity", or a NaN's bits as "0x" and 16 digits
//   point     "value": [x,y]
//   string    "value": the text
//   doubles   "value": an array of what a double has
//   memory    "version", "value": pairs of hexadecimal digits
//   section   "version", "children": an array of nodes
//   other     "word": the type word as "0x80000099", and of an immediate "value": its two data words, of a
//             block "value": hexadecimal digits, of a section "children". It stands for what the library
//             has no name for, and for a long, a string or an array whose bytes do not fit its type.
//
// What is written is the canonical form: one node a line, members in this order, numbers in their shortest
// form, upper case hexadecimal digits. A canonical text comes back byte for byte.

#include "korutil/tag_tree.h"
#include "tools/korutil/json.h"
#include "tools/korutil/output.h"
#include "tools/korutil/tree_file.h"

namespace kor::tree {

/// @throws command::Failure, CException*
void writeJson(StoredTree& tree, command::Output& output);

/// Builds an empty root from a document. A missing version counts as 0, missing children as none.
/// @throws json::Error for whatever the form above does not allow; CException*
void buildFromJson(const json::Document& document, CRootTagTree& root);

}  // namespace kor::tree
