#pragma once

struct sqlite3;

/// "zdrank", an FTS5 ranking function equal to the built-in bm25() (k1 1.2, b 0.75, all column
/// weights 1) but for where it takes each phrase's number of matching rows from: bm25() counts
/// them by running every phrase of the query over the whole table, which for a word that stands
/// for many terms, or a common one, costs more than the rest of the search. The caller usually
/// knows these counts already and binds them as a pointer of type `countsPointerType` to an
/// array of one count per phrase of the query, in query order; a count below zero (or a null
/// array) is counted as bm25() counts it. Called as `zdrank(table, ?)`; the result is the
/// negated score, as bm25() gives it.
namespace ZDRankFunction {
inline constexpr char countsPointerType[] = "zdrank-phrase-counts";
bool registerWith(sqlite3 *db);
} // namespace ZDRankFunction
