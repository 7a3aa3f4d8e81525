/* Random streams: the stream record, the registry of basic generators, and every generator's entries.
 *
 * A stream is one heap record that names a basic generator and carries its whole state. Integers are read at the width
 * shown. Every int32_t result is a status, 0 or a negative value of tarn_random_status, unless said otherwise.
 * Pointers are taken to be valid. A stream is used by one thread at a time; different streams may be used at once. */
#ifndef TARN_RANDOM_H
#define TARN_RANDOM_H

#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

enum tarn_random_status {
  TARN_RANDOM_OK = 0,
  TARN_RANDOM_BAD_METHOD = -2,
  TARN_RANDOM_BAD_PARAMETER = -3,
  TARN_RANDOM_NO_MEMORY = -4,
  TARN_RANDOM_NULL_POINTER = -5,
  TARN_RANDOM_BAD_GENERATOR = -1000,
  TARN_RANDOM_NO_LEAPFROG = -1002,
  TARN_RANDOM_NO_SKIP = -1003,
  TARN_RANDOM_NO_SKIP_EX = -1004,
  TARN_RANDOM_BAD_STATE_SIZE = -1008,
  TARN_RANDOM_BAD_WORD_SIZE = -1009,
  TARN_RANDOM_BAD_SEED_COUNT = -1010,
  TARN_RANDOM_BAD_BIT_COUNT = -1011,
  TARN_RANDOM_QUASI_EXHAUSTED = -1012,
  TARN_RANDOM_BAD_STREAM_COUNT = -1013,
  TARN_RANDOM_NO_BITS_OUTPUT = -1014,
  TARN_RANDOM_FILE_CLOSE = -1100,
  TARN_RANDOM_FILE_OPEN = -1101,
  TARN_RANDOM_FILE_WRITE = -1102,
  TARN_RANDOM_FILE_READ = -1103,
  TARN_RANDOM_BAD_FILE_FORMAT = -1110,
  TARN_RANDOM_BAD_FILE_VERSION = -1111,
  TARN_RANDOM_UPDATE_COUNT = -1120,
  TARN_RANDOM_UPDATE_NONE = -1121,
  TARN_RANDOM_WRONG_ABSTRACT_FORM = -1122,
  TARN_RANDOM_NO_HARDWARE_RANDOM = -1130,
  TARN_RANDOM_HARDWARE_RANDOM_FAILED = -1131,
  TARN_RANDOM_NO_AES = -1140,
  TARN_RANDOM_MULTINOMIAL_COUNTS = -1150,
  TARN_RANDOM_BAD_MEMORY_IMAGE = -1200,
  TARN_RANDOM_ENTRY_NOT_FOUND = -3000,
  TARN_RANDOM_TABLE_FULL = -3001
};

/* A block of data that hangs off a stream. A key other than (0, 0) that stands in the shared table means that the table
 * owns the data; otherwise the chunk does. */
typedef struct tarn_chunk {
  int32_t id;
  uint32_t size; /* bytes of data */
  void* data;    /* from tarn_serv_allocate, or null */
  struct tarn_chunk* next;
  uint64_t key[2];
} tarn_chunk;

/* The head of every stream; the generator's state follows at offset 16. */
typedef struct tarn_stream {
  int32_t brng;      /* the identifier by which the stream was made, old or new numbering */
  uint8_t format[4]; /* 1, 0, 0, 0 */
  tarn_chunk* chunks;
} tarn_stream;

/* One row of the registry.
 *   InitStream  method 0: params is n seed words; 1: leapfrog, n = nstreams, params an int32_t k; 2: skip ahead, n = 2,
 *               params a uint64_t count; 3: skip ahead by n little-endian uint64_t limbs.
 *   dBRng sBRng n values of [a, b) at r, and the stream moves on by n outputs.
 *   iBRng       n elements of WordSize bytes.
 * r may stand at any address; nothing outside its n elements is written, except by MCG31M1, which writes one element
 * for n below 1. */
typedef struct tarn_brng_properties {
  int32_t StreamStateSize; /* bytes of the whole record */
  int32_t NSeeds;          /* words of WordSize bytes that __kestCopyStreamState copies */
  int32_t IncludesZero;
  int32_t WordSize; /* 4, 8 or 16 */
  int32_t NBits;
  int32_t empty;
  int32_t (*InitStream)(int32_t method, tarn_stream* stream, int32_t n, const void* params);
  int32_t (*sBRng)(tarn_stream* stream, int32_t n, float* r, float a, float b);
  int32_t (*dBRng)(tarn_stream* stream, int32_t n, double* r, double a, double b);
  int32_t (*iBRng)(tarn_stream* stream, int32_t n, void* r);
} tarn_brng_properties;

/* An entry of the process-wide table of shared read-only blocks. */
typedef struct tarn_shared_block {
  uint64_t key0, key1;
  uint32_t refs;
  void* data;
} tarn_shared_block;

/* ---- Streams ---------------------------------------------------------------------------------------------------- */

/* Makes a stream of generator brng from n seed words. -1000 for an identifier that is not valid, or of an abstract row,
 * with *out left alone; -4 with *out null. A failing seeding leaves the stream in *out, to be deleted by the caller. */
int32_t __kestNewStreamEx(tarn_stream** out, int32_t brng, int32_t n, const uint32_t* seeds);
/* The record and header alone, for table row `row`; -4 with *out null. */
int32_t __kestAllocateStream(tarn_stream** out, const tarn_brng_properties* table, int32_t brng, int32_t row,
                             int32_t member);
/* A full copy, chunks included; shared blocks are shared. -1000, -4 (the copy then has no chunks and stays in *out). */
int32_t __kestCopyStream(tarn_stream** out, const tarn_stream* src);
/* Copies WordSize * NSeeds bytes of state and the chunks, and nothing else; identifiers are not compared. */
int32_t __kestCopyStreamState(tarn_stream* dst, const tarn_stream* src);
/* Frees the stream and its chunks and stores null. */
int32_t __kestDeleteStream(tarn_stream** stream);
/* Narrows the stream to its outputs k, k + nstreams, k + 2 nstreams, ...; -1013 for a negative nstreams, -1002 where
 * the generator has no leapfrog. Sobol and Niederr take nstreams 0x7FFFFFFF only: coordinate k of every point. */
int32_t __kestLeapfrogStream(tarn_stream* stream, int32_t k, int32_t nstreams);
/* Moves on by nskip outputs, taken as unsigned; -1003 where the generator has no skip ahead. */
int32_t __kestSkipAheadStream(tarn_stream* stream, int64_t nskip);
/* Moves on by a count of n little-endian words; -1004 where the generator has none. MRG32K3A with up to 4 words takes
 * counts below 2^193; ARS5 and PHILOX4X32X10 at most 3 words. */
int32_t __kestSkipAheadStreamEx(tarn_stream* stream, int32_t n, const uint64_t* words);
int32_t __kestGetStreamStateBrng(const tarn_stream* stream);
/* Bytes of the stream's saved image. */
int32_t __kestGetStreamSize(const tarn_stream* stream);

/* ---- Registry --------------------------------------------------------------------------------------------------- */

/* The rows of the old numbering (279, then zeros) and of the new one. */
extern const tarn_brng_properties __RegBrngs[512];
extern tarn_brng_properties __RegBrngsNew[512];

int32_t __kestGetBrngProperties(int32_t brng, tarn_brng_properties* out);
/* Rows in use of the new numbering. */
int32_t __kestGetNumRegBrngs(void);
/* Adds a generator and returns its identifier, or -1008, -1009, -1010, -1011, -5 in this order of checks. Not locked,
 * and the table's 512 rows are the caller's limit to keep. */
int32_t __kestRegisterBrng(const tarn_brng_properties* properties);
/* The table of an identifier, with the row and the family member in it; no check is made. */
const tarn_brng_properties* __kestGetBrngBaseOffset(int32_t brng, int32_t* row, int32_t* member);
int32_t __kestIsBrngValid(const tarn_brng_properties* table, int32_t row, int32_t member);

/* ---- Chunks ----------------------------------------------------------------------------------------------------- */

/* Attaches data (from tarn_serv_allocate, or null) at the head of the list. With a key that the shared table knows, the
 * chunk refers to the table's block, and data stays the caller's. -4 with nothing changed. */
int32_t __kestAddChunk(tarn_stream* stream, int32_t id, const uint64_t key[2], void* data, int32_t size);
/* Data of the first chunk with that id, or null. */
void* __kestSearchChunk(const tarn_stream* stream, int32_t id);
int32_t __kestGetNumChunks(const tarn_stream* stream);
int32_t __kestDeleteChunks(tarn_stream* stream);
/* Releases the chunks with that id. The list afterwards starts at the last chunk kept: meant for lists that hold at
 * most one other chunk. */
int32_t __kestDeleteChunksById(tarn_stream* stream, int32_t id);
/* Adds copies of the source's chunks, in reverse order. -4 empties the destination's list. */
int32_t __kestCopyChunks(tarn_stream* dst, const tarn_stream* src);

/* ---- Shared read-only blocks ------------------------------------------------------------------------------------ */

/* The table holds 128 entries. Each call takes the table's lock; entries may move when others are released. */
int32_t __kestFindGlobRODataTableEntry(tarn_shared_block** out, const uint64_t key[2]);
int32_t __kestCreateGlobRODataTableEntry(tarn_shared_block** out, const uint64_t key[2], void* data);
int32_t __kestRegisterGlobRODataReference(tarn_chunk* chunk, const uint64_t key[2]);
int32_t __kestUnregisterGlobRODataReference(const uint64_t key[2]);
/* A key that the table does not know: a time stamp and the given word. */
int32_t __kestGenerateNewGlobalRODataTableEntryId(uint64_t key[2], uint64_t second);
/* The lock itself: not recursive. */
void GlobRODataTableLock(void);
void GlobRODataTableUnLock(void);

/* ---- Generators --------------------------------------------------------------------------------------------------
 * MCG31M1        x = 1132489760 x mod 2^31 - 1. L'Ecuyer, Math. Comp. 68 (1999).
 * MCG59          x = 13^13 x mod 2^59.
 * WH             273 members, each a sum of four prime-modulus generators. Wichmann, Hill, Appl. Stat. 31 (1982);
 *                Maclaren, Appl. Stat. 38 (1989).
 * MRG32K3A       combined multiple recursive generator. L'Ecuyer, Oper. Res. 47 (1999).
 * R250           generalised feedback shift register. Kirkpatrick, Stoll, J. Comp. Phys. 40 (1981).
 * MT19937        Mersenne twister. Matsumoto, Nishimura, ACM TOMACS 8 (1998).
 * MT2203         6024 members. Matsumoto, Nishimura, Dynamic creation of pseudorandom number generators (2000).
 * SFMT19937      SIMD-oriented fast Mersenne twister. Saito, Matsumoto, MCQMC 2006 (2008).
 * Sobol          quasi-random, up to 40 coordinates. Bratley, Fox, ACM algorithm 659 (1988).
 * Niederr        quasi-random, up to 318 coordinates. Bratley, Fox, Niederreiter, ACM algorithm 738 (1994).
 * PHILOX4X32X10  counter-based. Salmon et al., SC11 (2011).
 * ARS5           counter-based on AES rounds, the same paper. -1140 on processors without the instructions.
 * TRNG           the processor's random instruction. -1130 without it, -1131 when it runs dry.
 * iAbstract, dAbstract, sAbstract   numbers from a caller's buffer. */
#define TARN_DECLARE_GENERATOR(Name)                                                                                   \
  int32_t __kestBRng##Name##InitStream(int32_t method, tarn_stream* stream, int32_t n, const void* params);            \
  int32_t __kestsBRng##Name(tarn_stream* stream, int32_t n, float* r, float a, float b);                               \
  int32_t __kestdBRng##Name(tarn_stream* stream, int32_t n, double* r, double a, double b);                            \
  int32_t __kestiBRng##Name(tarn_stream* stream, int32_t n, void* r)

TARN_DECLARE_GENERATOR(MCG31M1);
TARN_DECLARE_GENERATOR(R250);
TARN_DECLARE_GENERATOR(MRG32K3A);
TARN_DECLARE_GENERATOR(MCG59);
TARN_DECLARE_GENERATOR(WH);
TARN_DECLARE_GENERATOR(Sobol);
TARN_DECLARE_GENERATOR(Niederr);
TARN_DECLARE_GENERATOR(MT19937);
TARN_DECLARE_GENERATOR(MT2203);
TARN_DECLARE_GENERATOR(iAbstract);
TARN_DECLARE_GENERATOR(dAbstract);
TARN_DECLARE_GENERATOR(sAbstract);
TARN_DECLARE_GENERATOR(SFMT19937);
TARN_DECLARE_GENERATOR(TRNG);
TARN_DECLARE_GENERATOR(ARS5);
TARN_DECLARE_GENERATOR(PHILOX4X32X10);

/* The loops of TRNG without the test of the processor. */
int32_t _vdTRNGRdRand(tarn_stream* stream, int32_t n, double* r, double a, double b);
int32_t _vsTRNGRdRand(tarn_stream* stream, int32_t n, float* r, float a, float b);
int32_t _viTRNGRdRand(tarn_stream* stream, int32_t n, uint32_t* r);

/* 1 when the processor has the AES, the random, the vector AES instructions. */
int32_t __kestCPUisAES(void);
int32_t __kestCPUisRDRAND(void);
int32_t __kestCPUisVAES(void);

/* ---- Modular powers and jumps ----------------------------------------------------------------------------------- */

uint32_t __kestiPowMod(uint32_t base, uint64_t exponent, uint32_t modulus);
uint32_t __kestiPowMod2P31M1(uint32_t base, uint64_t exponent); /* base below 2^31 - 1 */
uint64_t __kestiPowMod2P59(uint64_t base, uint64_t exponent);   /* the low 59 bits count */

/* v = C^exponent v modulo modulus, C the companion matrix whose last row is `row` reversed. */
int32_t __kestiVect3PowMod(uint32_t v[3], const uint32_t row[3], uint32_t modulus, uint64_t exponent);
int32_t __kestiVect3PowArrayMod(uint32_t v[3], const uint32_t row[3], uint32_t modulus, int32_t n,
                                const uint64_t* limbs);
/* The same from a table of the powers C^(2^k), k = 0 .. 192, for the two moduli of MRG32K3A. */
int32_t __kestiVect3PowArrayMod_M1(uint32_t v[3], int32_t n, const uint64_t* limbs, const uint32_t* table_half);
int32_t __kestiVect3PowArrayMod_M2(uint32_t v[3], int32_t n, const uint64_t* limbs, const uint32_t* table_half);

/* Polynomial jump of a generator that is linear over GF(2), given by six functions on its states and by the exponents
 * of a polynomial that annihilates its transition. Horner's form, and a sliding window of 8 bits. 0, or -4 after
 * process_idx has run. Haramoto et al., INFORMS J. Comput. 20 (2008). */
#define TARN_DECLARE_JUMP(name)                                                                                        \
  int32_t name(void* state, void (*zero_state)(void* work), void (*add_state)(void* first, const void* second),        \
               void (*copy_state1)(void* work, const void* state), void (*update_s)(void* work),                       \
               void (*copy_state2)(void* state, const void* work, int32_t remainder),                                  \
               int32_t (*process_idx)(void* state, uint64_t* nskip, int32_t* remainder), uint64_t nskip,               \
               int32_t ring_words, int32_t degree, int32_t work_state_size, int32_t terms, const uint32_t* polynomial)
TARN_DECLARE_JUMP(__kest_SkipAheadHorner);
TARN_DECLARE_JUMP(__kest_SkipAheadSWin);
/* x^n modulo the polynomial, as a bit array of `words` 64-bit words, at least twice the degree in bits. 0 or -4. */
int32_t __kestPolyRem(uint64_t n, int32_t degree, int32_t terms, const uint32_t* exponents, int32_t words,
                      uint64_t* out);

extern const uint8_t __kest_WH_A[273][4];
extern const uint32_t __kest_WH_M[273][4];
extern const double __kestdWH_IM_Tab[273][4];
extern const uint32_t __kest_mrg32k3a_skipahead_table[2][193][9];
extern const uint32_t __kest_mt19937_poly[135];
extern const uint32_t __kest_sfmt19937_poly[6711];
extern const uint32_t __kest_mt2203_table[6024][3];

/* ---- Persistence -------------------------------------------------------------------------------------------------
 * An image is the same in a file and in memory. path has `length` bytes, or is NUL-terminated when length is negative.
 * After a failed load *out is null. Images of streams that hold pointers (the abstract rows) mean nothing elsewhere.
 *
 * What a loader cannot see in an image from a source that is not trusted, because the format does not hold it:
 * - the state may be any bytes, and chunks may be shorter than the generator or distribution takes them to be;
 * - a memory image may be shorter than its header and its chunks claim;
 * - one key may stand with two sizes, in two chunks of the image or in a chunk and in the process. The second chunk then
 *   refers to the block of the first and keeps its own size, and the table of shared blocks knows no sizes: saving such
 *   a stream reads past the block.
 * Loading, measuring, copying and deleting are safe with every file. A stream that comes from elsewhere must not be run
 * or saved before somebody vouches for it. A block that is read under a key known to the process stays allocated, with no
 * owner. */
int32_t __kestSaveStreamF(const tarn_stream* stream, const char* path, int32_t length);
/* Never reads past the file nor allocates more than the file can fill. */
int32_t __kestLoadStreamF(tarn_stream** out, const char* path, int32_t length);
/* block holds __kestGetStreamSize bytes. */
int32_t __kestSaveStreamM(const tarn_stream* stream, void* block);
/* The format carries no total length: block must hold all that its header and chunk sizes claim. */
int32_t __kestLoadStreamM(tarn_stream** out, const void* block);

typedef struct tarn_cursor {
  void* base;
  int32_t position;
} tarn_cursor;
int32_t __kestSaveToFile(const void* buffer, int64_t size, int64_t count, FILE* file);
int32_t __kestLoadFromFile(void* buffer, int64_t size, int64_t count, FILE* file);
int32_t __kestSaveToMemory(const void* buffer, int64_t size, int64_t count, tarn_cursor* cursor);
int32_t __kestLoadFromMemory(void* buffer, int64_t size, int64_t count, tarn_cursor* cursor);
int32_t __kestSkipLoadingFromFile(int32_t count, FILE* file);
int32_t __kestSkipLoadingFromMemory(int32_t count, tarn_cursor* cursor);

/* ---- Abstract streams --------------------------------------------------------------------------------------------
 * The stream reads the caller's circular buffer of n numbers; update renews at least *nmin and at most *nmax of them
 * from place *idx on and returns how many. It must not touch the stream. The buffer stays the caller's.
 * -3 for n = 0, a null pointer or a not below b, with *out left alone; -4 with *out null. */
typedef int32_t (*tarn_i_update)(tarn_stream* stream, int32_t* n, uint32_t* buffer, int32_t* nmin, int32_t* nmax,
                                 int32_t* idx);
typedef int32_t (*tarn_d_update)(tarn_stream* stream, int32_t* n, double* buffer, int32_t* nmin, int32_t* nmax,
                                 int32_t* idx);
typedef int32_t (*tarn_s_update)(tarn_stream* stream, int32_t* n, float* buffer, int32_t* nmin, int32_t* nmax,
                                 int32_t* idx);
int32_t __kestiNewAbstractStream(tarn_stream** out, int32_t n, uint32_t* buffer, tarn_i_update update);
int32_t __kestdNewAbstractStream(tarn_stream** out, int32_t n, double* buffer, double a, double b,
                                 tarn_d_update update);
int32_t __kestsNewAbstractStream(tarn_stream** out, int32_t n, float* buffer, float a, float b, tarn_s_update update);

#ifdef __cplusplus
}
#endif
#endif
