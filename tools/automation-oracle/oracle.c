/*
 * automation-oracle: records how the OLE Automation runtime (oleaut32)
 * converts and compares VARIANTs, as a tab separated golden table.
 *
 * The library's Variant code is checked against this table, so every
 * value written here must be exact and lossless; see README.md for the
 * column layout and the value encoding.
 *
 * Build with mingw-w64 and run under wine (regenerate.sh does both):
 *   x86_64-w64-mingw32-gcc -O1 -o oracle.exe oracle.c -loleaut32
 *   wine oracle.exe [--seed N] [--random N] [--no-fixed] [--out FILE]
 */

/* mingw's own printf: C99 exponent format ("1e-05", not "1e-005") and
 * correctly rounded %.17g, independent of the msvcrt in the wine prefix. */
#define __USE_MINGW_ANSI_STDIO 1

#include <windows.h>
#include <oleauto.h>

#include <fcntl.h>
#include <float.h>
#include <io.h>
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#define LCID_EN_US 0x0409

/* Default seed and size of the pseudo-random section.  regenerate.sh uses
 * these defaults, so changing them changes the committed table. */
#define DEFAULT_SEED 1u
#define DEFAULT_RANDOM_ROWS 1500u

/* ------------------------------------------------------------------ */
/* Kinds                                                               */
/* ------------------------------------------------------------------ */

enum kind { K_EMPTY, K_NULL, K_I2, K_I4, K_R4, K_R8, K_CY, K_DATE, K_BSTR, K_BOOL, K_UI1, K_COUNT };

static const VARTYPE kind_vt[K_COUNT] = {
    VT_EMPTY, VT_NULL, VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BSTR, VT_BOOL, VT_UI1,
};

static const char *const kind_name[K_COUNT] = {
    "EMPTY", "NULL", "I2", "I4", "R4", "R8", "CY", "DATE", "BSTR", "BOOL", "UI1",
};

/* Name of a VARTYPE as written in the table.  A type outside our kinds
 * would be a surprise worth seeing, so it is written as VT<number>. */
static const char *vt_name(VARTYPE vt, char *buf, size_t size)
{
    for (int k = 0; k < K_COUNT; ++k)
        if (kind_vt[k] == vt)
            return kind_name[k];
    snprintf(buf, size, "VT%u", (unsigned)vt);
    return buf;
}

/* ------------------------------------------------------------------ */
/* Value encoding                                                      */
/* ------------------------------------------------------------------ */

static FILE *out;

/* nan/inf/-0 are spelled out because printf spellings differ between C
 * runtimes, and the checker parses these words itself. */
static void put_double(double d, int digits)
{
    if (isnan(d))
        fputs("nan", out);
    else if (isinf(d))
        fputs(d < 0 ? "-inf" : "inf", out);
    else if (d == 0)
        fputs(signbit(d) ? "-0" : "0", out);
    else
        fprintf(out, "%.*g", digits, d);
}

static void put_text(const WCHAR *s, UINT len)
{
    for (UINT i = 0; i < len; ++i) {
        unsigned c = s[i];
        if (c == '\\')
            fputs("\\\\", out);
        else if (c == '\t')
            fputs("\\t", out);
        else if (c == '\n')
            fputs("\\n", out);
        else if (c == '\r')
            fputs("\\r", out);
        else if (c >= 0x20 && c <= 0x7E)
            fputc((int)c, out);
        else
            fprintf(out, "\\u%04X", c);
    }
}

static void put_value(const VARIANT *v)
{
    switch (V_VT(v)) {
    case VT_EMPTY:
    case VT_NULL:
        break;
    case VT_I2:
        fprintf(out, "%d", (int)V_I2(v));
        break;
    case VT_I4:
        fprintf(out, "%ld", (long)V_I4(v));
        break;
    case VT_UI1:
        fprintf(out, "%u", (unsigned)V_UI1(v));
        break;
    case VT_BOOL:
        fprintf(out, "%d", (int)V_BOOL(v));
        break;
    case VT_R4:
        put_double((double)V_R4(v), 9);
        break;
    case VT_R8:
        put_double(V_R8(v), 17);
        break;
    case VT_DATE:
        put_double(V_DATE(v), 17);
        break;
    case VT_CY:
        fprintf(out, "%lld", (long long)V_CY(v).int64);
        break;
    case VT_BSTR:
        put_text(V_BSTR(v), SysStringLen(V_BSTR(v)));
        break;
    default:
        break;
    }
}

static void put_operand(const VARIANT *v)
{
    char buf[16];
    fputs(vt_name(V_VT(v), buf, sizeof buf), out);
    fputc('\t', out);
    put_value(v);
}

/* ------------------------------------------------------------------ */
/* Building operands                                                   */
/* ------------------------------------------------------------------ */

static VARIANT make_kind(enum kind k)
{
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = kind_vt[k];
    return v;
}

static VARIANT mk_empty(void) { return make_kind(K_EMPTY); }
static VARIANT mk_null(void) { return make_kind(K_NULL); }
static VARIANT mk_i2(int x) { VARIANT v = make_kind(K_I2); V_I2(&v) = (SHORT)x; return v; }
static VARIANT mk_i4(long long x) { VARIANT v = make_kind(K_I4); V_I4(&v) = (LONG)x; return v; }
static VARIANT mk_ui1(int x) { VARIANT v = make_kind(K_UI1); V_UI1(&v) = (BYTE)x; return v; }
static VARIANT mk_bool(int x) { VARIANT v = make_kind(K_BOOL); V_BOOL(&v) = x ? VARIANT_TRUE : VARIANT_FALSE; return v; }
static VARIANT mk_r4(float x) { VARIANT v = make_kind(K_R4); V_R4(&v) = x; return v; }
static VARIANT mk_r8(double x) { VARIANT v = make_kind(K_R8); V_R8(&v) = x; return v; }
static VARIANT mk_date(double x) { VARIANT v = make_kind(K_DATE); V_DATE(&v) = x; return v; }
static VARIANT mk_cy(long long units) { VARIANT v = make_kind(K_CY); V_CY(&v).int64 = units; return v; }
static VARIANT mk_strn(const WCHAR *s, UINT len) { VARIANT v = make_kind(K_BSTR); V_BSTR(&v) = SysAllocStringLen(s, len); return v; }
static VARIANT mk_str(const WCHAR *s) { return mk_strn(s, (UINT)wcslen(s)); }

/* A growable list of operands.  The fixed section keeps its operands for
 * the whole run; VariantClear releases the BSTRs at the end. */
struct pool {
    VARIANT *items;
    size_t count, capacity;
};

static void pool_add(struct pool *p, VARIANT v)
{
    if (p->count == p->capacity) {
        p->capacity = p->capacity ? p->capacity * 2 : 256;
        p->items = realloc(p->items, p->capacity * sizeof *p->items);
        if (!p->items) {
            fputs("out of memory\n", stderr);
            exit(2);
        }
    }
    p->items[p->count++] = v;
}

static void pool_free(struct pool *p)
{
    for (size_t i = 0; i < p->count; ++i)
        VariantClear(&p->items[i]);
    free(p->items);
    p->items = NULL;
    p->count = p->capacity = 0;
}

#define COUNT_OF(a) (sizeof(a) / sizeof((a)[0]))

/* ------------------------------------------------------------------ */
/* The three recorded operations                                       */
/* ------------------------------------------------------------------ */

static unsigned long rows_written;

static void put_hresult(HRESULT hr)
{
    fprintf(out, "ERR\t%08lX", (unsigned long)(ULONG)hr);
}

static void record_change(const char *op, const VARIANT *src, VARTYPE target, USHORT flags)
{
    VARIANT dst;
    char buf[16];
    VariantInit(&dst);
    HRESULT hr = VariantChangeTypeEx(&dst, (VARIANT *)src, LCID_EN_US, flags, target);

    fprintf(out, "%s\t", op);
    put_operand(src);
    fprintf(out, "\t%s\t\t", vt_name(target, buf, sizeof buf));
    if (FAILED(hr))
        put_hresult(hr);
    else
        put_operand(&dst);
    fputc('\n', out);
    ++rows_written;
    VariantClear(&dst);
}

static void record_cmp(const VARIANT *a, const VARIANT *b)
{
    HRESULT hr = VarCmp((VARIANT *)a, (VARIANT *)b, LCID_EN_US, 0);

    fputs("cmp\t", out);
    put_operand(a);
    fputc('\t', out);
    put_operand(b);
    fputc('\t', out);
    switch (hr) {
    case VARCMP_LT: fputs("CMP\tLT", out); break;
    case VARCMP_EQ: fputs("CMP\tEQ", out); break;
    case VARCMP_GT: fputs("CMP\tGT", out); break;
    case VARCMP_NULL: fputs("CMP\tNULL", out); break;
    default: put_hresult(hr); break;
    }
    fputc('\n', out);
    ++rows_written;
}

static void record_all_changes(const VARIANT *src)
{
    for (int k = 0; k < K_COUNT; ++k)
        record_change("change", src, kind_vt[k], 0);
}

static void record_text(const VARIANT *src)
{
    record_change("text", src, VT_BSTR, VARIANT_ALPHABOOL);
}

/* ------------------------------------------------------------------ */
/* Fixed corpus                                                        */
/* ------------------------------------------------------------------ */

static const int fixed_i2[] = {
    0, 1, -1, 2, -2, 7, 10, -10, 12, 99, 100, 127, -127, 128, -128, -129,
    254, 255, 256, -255, -256, 1000, 1234, -1234, 9999, 10000, 16384,
    32766, 32767, -32767, -32768,
};

static const long long fixed_i4[] = {
    0, 1, -1, 2, 10, -10, 100, 127, 128, -128, -129, 255, 256, 32767, 32768,
    -32768, -32769, 65535, 65536, -65536, 99999, 100000, 999999, 1000000,
    12345678, 123456789, -123456789, 16777216, 16777217, 999999999,
    1000000000, 2147483646, 2147483647, -2147483647, -2147483647 - 1,
    36526, 25569, 2958465, 2958466, -657434, -657435, 59, 60, 61,
    922337203,
};

static const int fixed_ui1[] = { 0, 1, 2, 9, 10, 12, 99, 100, 127, 128, 200, 254, 255 };

static const float fixed_r4[] = {
    0.0f, 1.0f, -1.0f, 0.5f, -0.5f, 1.5f, -1.5f, 2.5f, -2.5f, 3.5f, -3.5f,
    0.49999997f, 0.50000006f, -0.49999997f, 1.4999999f, 0.1f, 0.2f, 0.3f,
    1.0f / 3.0f, 2.0f / 3.0f, 0.25f, 1e-5f, 1e-4f, 0.00001234f, 123.456f,
    1234.5f, 12345.678f, 126.5f, 127.5f, 128.5f, -128.5f, -129.5f, 254.5f,
    255.5f, 256.5f, 255.49998f, 32766.5f, 32767.5f, 32768.5f, -32768.5f,
    -32767.5f, -32769.5f, 65535.5f, 65536.0f, 2147483520.0f, 2147483648.0f,
    -2147483648.0f, -2147483904.0f, 4294967296.0f, 16777215.0f, 16777216.0f,
    16777218.0f, 8388607.5f, 1e7f, 9999999.0f, 1e10f, 1e15f, 1e16f,
    922337203685477.5807f, FLT_MAX, -FLT_MAX,
    1e38f, FLT_MIN, 1e-38f, 1e-40f, 1.4e-45f, 36526.75f, 0.99999994f,
    1.00000012f, 99.99f, 1.005f, 3.14159274f,
};

static const double fixed_r8[] = {
    0.0, 1.0, -1.0, 2.0, 0.1, 0.2, 0.3, 0.1 + 0.2, 1.0 / 3.0, 2.0 / 3.0,
    -1.0 / 3.0, 0.25, 0.75, 1e-5, 1e-4, 0.00001234, 0.001, 0.01, 1e-6,
    1e-7, 1e-10, 1e-15, 1e-16, 1e-300, 1e-308, DBL_MIN,
    2.2250738585072009e-308, 4.9406564584124654e-324, 1e-320, 1e-45,
    1.4e-45, 1e-46, 3.4e38, 3.4028234663852886e38, 3.4028235677973362e38,
    3.4028235677973366e38, 3.5e38, -3.5e38, 1e38, 1e39, 1e308,
    1.7976931348623157e300, DBL_MAX, -DBL_MAX, 123456789012345.0,
    1234567890123456.0, 12345678901234567.0, 123456789012345.6,
    12345678901234.56, 1e15, 1e16, 1e17, 1e20, 1e21, -1e15,
    999999999999999.0, 999999999999999.9, 9999999999999998.0,
    9007199254740992.0, 9007199254740994.0, 0.123456789012345,
    0.1234567890123456, 0.12345678901234567, 1.0000000000000002,
    0.99999999999999989, 0.999999999999999, 0.9999999999999999e-5,
    99999999999999.99, 100000000000000.01, -0.51, 32768.0, -32769.0,
    2147483648.0, -2147483649.0, 4294967295.0, 4294967296.0,
    922337203685477.75, 922337203685478.0,
    922337203685477.0, -922337203685477.75,
    -922337203685478.0, 0.000049999, 0.000050000001, 1.23455, 1.23465,
    0.12345, 12345.67895, 1e-5 * 3, 36526.75, 36526.5, 100.0, 1e5, 1e6,
    1e7, 3.141592653589793, 2.718281828459045, 6.02214076e23,
};

/* Exact halves, where conversions to integer kinds round half to even and
 * CY rounds its fifth decimal; each is also recorded one step either side. */
static const double fixed_r8_halves[] = {
    0.5, -0.5, 1.5, -1.5, 2.5, -2.5, 3.5, -3.5, 4.5, 126.5, 127.5, 128.5,
    -128.5, -129.5, 254.5, 255.5, 256.5, 32766.5, 32767.5, -32767.5,
    -32768.5, 65535.5, 2147483646.5, 2147483647.5, -2147483648.5,
    922337203685477.5, -922337203685477.5, 0.00005, -0.00005, 0.00015,
    -0.00015, 0.00025, 0.00035,
};

static const double fixed_date[] = {
    0.0, 0.5, 1.0, 1.5, 2.0, 2.25, -0.25, -0.5, -0.75, -1.0, -1.25, -1.5,
    -1.75, -2.0, -2.5, -0.99998842592592596, 36525.0, 36526.0, 36526.25,
    36526.5, 36526.75, 36526.000005787037, 36526.0000057870,
    36526.0000057871, 36526.00001157407407, 36526.999994212963,
    36526.99999, 36526.999999, 0.99999, 0.999994212962963,
    0.99999421296296291, 0.99999999, 1.0 / 3.0, 2.0 / 3.0, 1.0 / 86400.0,
    0.5 / 86400.0, 1.5 / 86400.0, 2.5 / 86400.0, 0.49 / 86400.0,
    0.51 / 86400.0, 1.0 / 24.0, 1.0 / 1440.0, 12.5 / 24.0, -657434.0,
    -657434.5, -657434.99999, -657435.0, 2958465.0, 2958465.5, 2958465.99998,
    2958465.9999999, 2958466.0, 1e7, -1e7, 59.0, 60.0, 61.0, 25569.0,
    43831.5, 1e-10, -1e-10, 1e-7, 32767.0, 32768.0, 255.0, 256.0,
};

static const long long fixed_cy[] = {
    0, 1, -1, 2, 4, 5, 6, 9, 10, 49, 50, 51, 99, 100, 999, 1000, -1000,
    4999, 5000, 5001, -4999, -5000, -5001, 10000, -10000, 12345, -12345,
    15000, -15000, 25000, -25000, 35000, -35000, 1234567, -1234567,
    1275000, 1285000, -1285000, 2545000, 2555000, 2565000, 327665000,
    327675000, 327685000, -327675000, -327685000, -327695000, 655355000,
    655365000, 21474836465000LL, 21474836475000LL, 21474836480000LL,
    -21474836475000LL, -21474836485000LL, -21474836490000LL, INT64_MAX,
    INT64_MAX - 1, INT64_MIN, INT64_MIN + 1, 9007199254740993LL,
    1000000000000000000LL, 365265000, 365267500, 20000, 3333, 33333333,
    9999999999LL, 922337203685477LL,
};

/* Texts the library is likely to meet, and texts chosen to find the edges
 * of the runtime's number, date and Boolean parsers. */
static const WCHAR *const fixed_text[] = {
    /* plain numbers */
    L"0", L"1", L"-1", L"+1", L"2", L"12", L"-12", L"01", L"007", L"1.5",
    L"-1.5", L"2.5", L"-2.5", L"0.5", L"-0.5", L".5", L"-.5", L"5.", L"1.",
    L"-0", L"+0", L"0.0", L"00",
    /* blanks */
    L" 12", L"12 ", L"  12  ", L"\t12", L"12\t", L"\t 12 \t", L"\n12",
    L"12\r\n", L" - 12", L"- 12", L"-  12", L"1 2", L"12 34",
    /* signs and parentheses */
    L"12-", L"12+", L"+12", L"--12", L"+-12", L"-+12", L"12--", L"(12)",
    L"(12", L"12)", L"( 12 )", L"(-12)", L"-(12)", L"(1.5)", L"()", L"(",
    L")", L"-", L"+", L".", L"-.", L"+.", L"(12)-",
    /* thousands separators */
    L"1,234", L"1,234,567", L"1,2,3", L"12,34", L",5", L"5,", L",", L"1,,2",
    L"1,234.5", L"-1,234", L"1,234-", L"(1,234)", L"1,000,000,000",
    L"2,147,483,647", L"2,147,483,648", L"32,767", L"32,768", L"1 234",
    L"1.234,5", L"1,234.5,6", L"1,23", L"1234,567", L",,1",
    /* decimal points and many digits */
    L"1.2.3", L"..1", L"0.1", L"0.01", L"0.001", L"0.0001", L"0.00001",
    L"0.00005", L"0.00015", L"0.00025", L"0.000050000001", L"1.23455",
    L"0.12345", L"123.456", L"3.14159265358979", L"3.141592653589793",
    L"3.1415926535897932384626", L"0.1000000000000000055511151231257827",
    L"123456789012345", L"1234567890123456", L"12345678901234567",
    L"123456789012345678901234567890", L"0.000000000000000000001",
    L"0000000000000000000000000000012", L"000000000000000000000000000001.5",
    L"1.00000000000000000000000000000000000000001",
    L"10000000000000000000000000000000000000000",
    /* exponents */
    L"1e3", L"1E3", L"1E+3", L"1e-3", L"1d3", L"1D3", L"1D+3", L"1.5e-2",
    L"1.5E2", L"-1.5e2", L"1e", L"1e+", L"e3", L"1e3.5", L"1e 3", L"1 e3",
    L"1e308", L"1e309", L"-1e309", L"1e-308", L"1e-324", L"1e-400",
    L"4.9e-324", L"2.2250738585072014e-308", L"3.4e38", L"3.5e38",
    L"3.4028235e38", L"3.40282357e38", L"-3.5e38", L"1e-45", L"1.4e-45",
    L"1e-46", L"1e38", L"1e39", L"1e15", L"1e16", L"1e17", L"1e-5", L"1e-4",
    L"1.234e4", L"12e-1", L"0e0", L"0e999", L"1e0010", L"1ee3", L"1e3e3",
    L"1.e3", L".e3", L"1e-3.5", L"1,000e3", L"1e3,000",
    /* range boundaries */
    L"32767", L"32768", L"-32768", L"-32769", L"32767.5", L"32766.5",
    L"-32768.5", L"-32767.5", L"32767.49", L"-32768.49", L"65535", L"65536",
    L"255", L"256", L"255.5", L"254.5", L"255.49", L"-0.51", L"0.49",
    L"0.51", L"2147483647", L"2147483648", L"-2147483648", L"-2147483649",
    L"2147483647.5", L"2147483646.5", L"-2147483648.5", L"4294967295",
    L"4294967296", L"922337203685477.5807", L"922337203685477.5808",
    L"-922337203685477.5808", L"-922337203685477.5809",
    L"922337203685477.58075", L"922337203685477", L"922337203685478",
    L"9223372036854775807", L"9223372036854775808", L"1.00005", L"1.00015",
    L"-1.00005", L"12345.67895",
    /* hexadecimal and octal */
    L"&HFF", L"&hff", L"&hFFFF", L"&H7FFF", L"&H8000", L"&HFFFF8000",
    L"&H7FFFFFFF", L"&H80000000", L"&HFFFFFFFF", L"&H100000000",
    L"&HFFFFFFFFFFFFFFFF", L"&H0", L"&H", L"&HG", L"&H1G", L"&H 1", L"&H-1",
    L"-&H1", L"&O777", L"&o17", L"&O", L"&O8", L"&O77777", L"&O100000",
    L"&O177777", L"&O37777777777", L"&O40000000000", L"&B101", L"0x10",
    L"0xFF", L"&HFF.5", L"&HFFh", L" &H10", L"&H10 ", L"&H1e3", L"&H00FF",
    L"&", L"&12",
    /* currency */
    L"$12", L"12$", L"$-1", L"-$1", L"$ 12", L"$(12)", L"($12)",
    L"$1,234.56", L"$", L"$$12", L"12 $", L"USD12", L"\x00A3" L"12",
    L"\x20AC" L"12", L"12\x20AC", L"$1.23456", L"-$0.00005",
    /* percent */
    L"12%", L"%12", L"50%", L"1.5%", L"12 %",
    /* letters */
    L"12abc", L"abc", L"abc12", L"1a", L"a1", L"A", L"0x", L"NaN", L"nan",
    L"Inf", L"-Inf", L"Infinity", L"1.#INF", L"1.#QNAN", L"#12#",
    L"#1/1/2000#",
    /* empty and blank-only */
    L"", L" ", L"  ", L"\t", L"\r\n", L"\x00A0", L"\x3000",
    /* Boolean words */
    L"True", L"False", L"true", L"false", L"TRUE", L"FALSE", L"yes", L"no",
    L"Yes", L"On", L"Off", L"#TRUE#", L"#FALSE#", L"True ", L" False",
    L"Truex", L"T", L"F", L"Wahr", L"Vrai",
    /* dates and times */
    L"1/1/2000", L"12/31/1899", L"12/30/1899", L"12/31/1899 13:30",
    L"1/1/1900", L"1/2/1900", L"2000-01-01", L"2000/01/01", L"1-1-2000",
    L"01.01.2000", L"Jan 1, 2000", L"1 Jan 2000", L"January 1 2000",
    L"12:00 PM", L"12:00 AM", L"12:00", L"13:30", L"13:30:15", L"1:30:15 PM",
    L"0:00", L"24:00", L"25:00", L"12:60", L"12:00:60", L"1/1/100",
    L"1/1/99", L"1/1/29", L"1/1/30", L"12/31/9999", L"1/1/10000",
    L"2/29/2000", L"2/29/1900", L"2/30/2000", L"13/1/2000", L"0/1/2000",
    L"1/0/2000", L"31/12/2000", L"1/1/2000 12:00 PM", L"1/1/2000 0:00:01",
    L"1/1/2000 23:59:59", L"1/1", L"1/2000", L"2000", L"12:30:45.5",
    L"12 PM", L"noon", L"1/1/-1", L"1/1/1752", L"1/1/1600", L"12:00PM",
    L"12:00 pm", L"12:00 P", L"1/1/2000 1:00 AM", L"2000-01-01T12:00:00",
    /* characters outside ASCII */
    L"\xFF11\xFF12", L"\x0661\x0662", L"\x2212" L"12", L"12\x00A0",
    L"\x00A0" L"12", L"1\x00A0" L"234", L"\x00BD", L"\xFEFF" L"12",
    L"caf\x00E9", L"\xD83D\xDE00",
};

/* A BSTR carries its length, so an embedded NUL is a legal value; the
 * runtime's parsers may stop at it. */
static const struct { const WCHAR *text; UINT len; } fixed_text_nul[] = {
    { L"1\0" L"2", 3 },
    { L"\0" L"12", 3 },
    { L"12\0", 3 },
};

static void build_fixed_sources(struct pool *p)
{
    pool_add(p, mk_empty());
    pool_add(p, mk_null());
    for (size_t i = 0; i < COUNT_OF(fixed_i2); ++i) pool_add(p, mk_i2(fixed_i2[i]));
    for (size_t i = 0; i < COUNT_OF(fixed_i4); ++i) pool_add(p, mk_i4(fixed_i4[i]));
    for (size_t i = 0; i < COUNT_OF(fixed_r4); ++i) pool_add(p, mk_r4(fixed_r4[i]));
    /* the floats either side of the CY limit */
    pool_add(p, mk_r4(nextafterf(922337203685477.5807f, 0.0f)));
    pool_add(p, mk_r4(nextafterf(922337203685477.5807f, INFINITY)));
    pool_add(p, mk_r4(-0.0f));
    pool_add(p, mk_r4(NAN));
    pool_add(p, mk_r4(INFINITY));
    pool_add(p, mk_r4(-INFINITY));
    for (size_t i = 0; i < COUNT_OF(fixed_r8); ++i) pool_add(p, mk_r8(fixed_r8[i]));
    for (size_t i = 0; i < COUNT_OF(fixed_r8_halves); ++i) {
        double h = fixed_r8_halves[i];
        pool_add(p, mk_r8(h));
        pool_add(p, mk_r8(nextafter(h, 0.0)));
        pool_add(p, mk_r8(nextafter(h, h > 0 ? INFINITY : -INFINITY)));
    }
    pool_add(p, mk_r8(-0.0));
    pool_add(p, mk_r8(NAN));
    pool_add(p, mk_r8(INFINITY));
    pool_add(p, mk_r8(-INFINITY));
    pool_add(p, mk_r8((double)0.1f));
    for (size_t i = 0; i < COUNT_OF(fixed_cy); ++i) pool_add(p, mk_cy(fixed_cy[i]));
    for (size_t i = 0; i < COUNT_OF(fixed_date); ++i) pool_add(p, mk_date(fixed_date[i]));
    pool_add(p, mk_date(-0.0));
    pool_add(p, mk_date(NAN));
    pool_add(p, mk_date(INFINITY));
    pool_add(p, mk_date(-INFINITY));
    for (size_t i = 0; i < COUNT_OF(fixed_text); ++i) pool_add(p, mk_str(fixed_text[i]));
    for (size_t i = 0; i < COUNT_OF(fixed_text_nul); ++i)
        pool_add(p, mk_strn(fixed_text_nul[i].text, fixed_text_nul[i].len));
    pool_add(p, mk_bool(1));
    pool_add(p, mk_bool(0));
    for (size_t i = 0; i < COUNT_OF(fixed_ui1); ++i) pool_add(p, mk_ui1(fixed_ui1[i]));
}

/* Operands compared with each other, every ordered pair.  Smaller than the
 * conversion list because the row count grows with its square. */
static void build_fixed_comparands(struct pool *p)
{
    static const int i2[] = { 0, 1, -1, 255, 32767, -32768 };
    static const long long i4[] = { 0, 1, -1, 65536, 2147483647, -2147483647 - 1 };
    static const float r4[] = { 0.0f, 1.0f, -1.0f, 0.5f, 1.5f, 2.5f, 0.1f, 16777216.0f, FLT_MAX };
    static const double r8[] = {
        0.0, 1.0, -1.0, 0.5, 1.5, 0.1, 1.0 / 3.0, 1e-300, 1e308,
        32767.5, 2147483647.5, 922337203685477.5,
    };
    static const long long cy[] = { 0, 1, 1000, 5000, 10000, -10000, 20000, INT64_MAX, INT64_MIN };
    static const double date[] = { 0.0, 1.0, 2.0, -1.0, 0.5, -1.5, 36526.75 };
    static const WCHAR *const text[] = {
        L"", L" ", L"0", L"1", L"-1", L"1.0", L"01", L"2", L"10", L"9", L"0.1",
        L"a", L"A", L"b", L"B", L"abc", L"ABC", L"True", L"False", L"true",
        L"1/1/1900", L"12:00 PM", L"1e3", L" 1", L"\x00E4",
    };

    pool_add(p, mk_empty());
    pool_add(p, mk_null());
    for (size_t i = 0; i < COUNT_OF(i2); ++i) pool_add(p, mk_i2(i2[i]));
    for (size_t i = 0; i < COUNT_OF(i4); ++i) pool_add(p, mk_i4(i4[i]));
    for (size_t i = 0; i < COUNT_OF(r4); ++i) pool_add(p, mk_r4(r4[i]));
    pool_add(p, mk_r4(-0.0f));
    pool_add(p, mk_r4(NAN));
    pool_add(p, mk_r4(INFINITY));
    pool_add(p, mk_r4(-INFINITY));
    for (size_t i = 0; i < COUNT_OF(r8); ++i) pool_add(p, mk_r8(r8[i]));
    pool_add(p, mk_r8(-0.0));
    pool_add(p, mk_r8(NAN));
    pool_add(p, mk_r8(INFINITY));
    pool_add(p, mk_r8(-INFINITY));
    pool_add(p, mk_r8((double)0.1f));
    for (size_t i = 0; i < COUNT_OF(cy); ++i) pool_add(p, mk_cy(cy[i]));
    for (size_t i = 0; i < COUNT_OF(date); ++i) pool_add(p, mk_date(date[i]));
    for (size_t i = 0; i < COUNT_OF(text); ++i) pool_add(p, mk_str(text[i]));
    pool_add(p, mk_bool(1));
    pool_add(p, mk_bool(0));
    pool_add(p, mk_ui1(0));
    pool_add(p, mk_ui1(1));
    pool_add(p, mk_ui1(255));
}

static void write_fixed_section(void)
{
    struct pool sources = { 0 }, comparands = { 0 };

    build_fixed_sources(&sources);
    for (size_t i = 0; i < sources.count; ++i)
        record_all_changes(&sources.items[i]);
    for (size_t i = 0; i < sources.count; ++i)
        record_text(&sources.items[i]);

    build_fixed_comparands(&comparands);
    for (size_t i = 0; i < comparands.count; ++i)
        for (size_t j = 0; j < comparands.count; ++j)
            record_cmp(&comparands.items[i], &comparands.items[j]);

    pool_free(&sources);
    pool_free(&comparands);
}

/* ------------------------------------------------------------------ */
/* Pseudo-random section                                               */
/* ------------------------------------------------------------------ */

/* splitmix64: tiny, well mixed, and the same on every platform, so a seed
 * names one exact table. */
static uint64_t rng_state;

static uint64_t rnd(void)
{
    uint64_t z = (rng_state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

/* 0 .. n-1; the modulo bias is irrelevant for picking test inputs. */
static unsigned below(unsigned n) { return (unsigned)(rnd() % n); }
static long long between(long long lo, long long hi) { return lo + (long long)(rnd() % (uint64_t)(hi - lo + 1)); }
static double unit(void) { return (double)(rnd() >> 11) * 0x1p-53; }
static int coin(void) { return (int)(rnd() & 1); }

/* 10^e, correctly rounded.  pow() may differ by an ulp between C
 * runtimes; mingw's own strtod is exact, so a seed draws the same table
 * wherever the tool is built. */
double __cdecl __mingw_strtod(const char *, char **);
static double pow10i(int e)
{
    char buf[16];
    snprintf(buf, sizeof buf, "1e%d", e);
    return __mingw_strtod(buf, NULL);
}

/* Integer limits of the target kinds: conversions go wrong near these. */
static const long long int_edges[] = {
    0, 1, -1, 127, 128, -128, 255, 256, 32767, 32768, -32768, -32769,
    65535, 65536, 2147483647LL, 2147483648LL, -2147483648LL, -2147483649LL,
};

/* Doubles near which rounding, overflow or date limits change behaviour. */
static const double real_edges[] = {
    0.0, 0.5, -0.5, 1.5, 2.5, 127.5, 128.5, -128.5, 255.5, 256.5, 32767.5,
    -32768.5, 65535.5, 2147483647.5, -2147483648.5, 922337203685477.58,
    -922337203685477.58, 2958465.99999, -657434.99999, 3.4028234663852886e38,
    1.1754943508222875e-38, 1e308, 1e-308, 1e15, 1e16, 0.00005, 36526.75,
};

static long long draw_integer(void)
{
    switch (below(3)) {
    case 0: return int_edges[below(COUNT_OF(int_edges))] + between(-3, 3);
    case 1: return between(-1000, 1000);
    default: return (long long)(int32_t)(uint32_t)rnd();
    }
}

static double canonical_nan(double d) { return isnan(d) ? NAN : d; }

static double draw_real(void)
{
    switch (below(9)) {
    case 0: { /* an edge, possibly nudged by a few units in the last place */
        double d = real_edges[below(COUNT_OF(real_edges))];
        int steps = (int)between(-2, 2);
        for (; steps > 0; --steps) d = nextafter(d, INFINITY);
        for (; steps < 0; ++steps) d = nextafter(d, -INFINITY);
        return d;
    }
    case 1: /* an exact half, which integer conversions must round to even */
        return (double)draw_integer() + (coin() ? 0.5 : -0.5);
    case 2: { /* a short decimal such as 12.34 */
        int digits = (int)between(1, 9);
        double m = (double)between(0, (long long)pow10i(digits) - 1);
        double d = m / pow10i((int)between(0, 8));
        return coin() ? -d : d;
    }
    case 3: { /* any magnitude, spread evenly over exponents */
        double d = (1.0 + 9.0 * unit()) * pow10i((int)between(-320, 307));
        return coin() ? -d : d;
    }
    case 4: { /* any bit pattern */
        uint64_t bits = rnd();
        double d;
        memcpy(&d, &bits, sizeof d);
        return canonical_nan(d);
    }
    case 5: { /* 15 to 17 significant digits */
        int digits = (int)between(15, 17);
        double m = (double)between((long long)pow10i(digits - 1), (long long)pow10i(digits) - 1);
        double d = m * pow10i((int)between(-digits - 3, 3));
        return coin() ? -d : d;
    }
    case 6: /* a date-like day number with a time of day */
        return (double)between(-700000, 3000000) + (double)between(0, 86399) / 86400.0;
    case 7: /* quarters and small integers */
        return (double)between(-1200, 1200) / 4.0;
    default: { /* an exact CY-representable amount */
        double d = (double)between(-99999999, 99999999) / 10000.0;
        return d;
    }
    }
}

static float draw_r4(void)
{
    switch (below(3)) {
    case 0: {
        uint32_t bits = (uint32_t)rnd();
        float f;
        memcpy(&f, &bits, sizeof f);
        return isnan(f) ? NAN : f;
    }
    case 1: {
        static const float edges[] = {
            0.5f, 127.5f, 255.5f, 32767.5f, -32768.5f, 2147483648.0f,
            -2147483648.0f, 16777216.0f, FLT_MAX, FLT_MIN, 922337203685477.5807f,
        };
        float f = edges[below(COUNT_OF(edges))];
        int steps = (int)between(-2, 2);
        for (; steps > 0; --steps) f = nextafterf(f, INFINITY);
        for (; steps < 0; ++steps) f = nextafterf(f, -INFINITY);
        return f;
    }
    default:
        return (float)draw_real();
    }
}

static long long draw_cy_units(void)
{
    switch (below(5)) {
    case 0: return draw_integer() * 10000 + (coin() ? 5000 : 0);
    case 1: return (long long)rnd();
    case 2: return (coin() ? INT64_MAX - (long long)below(3) : INT64_MIN + (long long)below(3));
    case 3: return between(-99999, 99999);
    default: {
        double d = draw_real();
        if (!(fabs(d) < 9e14))
            d = fmod(isfinite(d) ? d : 0.0, 9e14);
        return (long long)llround(d * 10000.0);
    }
    }
}

static double draw_date(void)
{
    double day = (double)(below(8) ? between(-657434, 2958465) : between(-800000, 3100000));
    double frac;
    switch (below(4)) {
    case 0: frac = 0.0; break;
    case 1: frac = (double)between(0, 86399) / 86400.0; break;
    case 2: frac = ((double)between(0, 86399) + 0.5) / 86400.0; break;
    default: frac = unit(); break;
    }
    return day < 0 ? day - frac : day + frac;
}

/* Text building ---------------------------------------------------- */

struct text {
    WCHAR s[200];
    UINT len;
};

static void text_put(struct text *t, unsigned c)
{
    if (t->len < COUNT_OF(t->s))
        t->s[t->len++] = (WCHAR)c;
}

static void text_puts(struct text *t, const char *s)
{
    while (*s)
        text_put(t, (unsigned char)*s++);
}

static void text_blanks(struct text *t)
{
    static const char *const blanks[] = { "", "", "", "", " ", "  ", "\t", " \t" };
    text_puts(t, blanks[below(COUNT_OF(blanks))]);
}

/* Insert thousands separators into the integer digits of s, correctly
 * grouped or, now and then, misplaced. */
static void group_digits(const char *in, char *outbuf, size_t size)
{
    const char *digits = in;
    size_t n = 0, o = 0;
    while (*digits && (*digits < '0' || *digits > '9'))
        outbuf[o++] = *digits++;
    while (digits[n] >= '0' && digits[n] <= '9')
        ++n;
    int misplaced = below(4) == 0;
    for (size_t i = 0; i < n && o + 2 < size; ++i) {
        outbuf[o++] = digits[i];
        size_t left = n - i - 1;
        if (left > 0 && (misplaced ? below(3) == 0 : left % 3 == 0))
            outbuf[o++] = ',';
    }
    for (const char *rest = digits + n; *rest && o + 1 < size; ++rest)
        outbuf[o++] = *rest;
    outbuf[o] = '\0';
}

static void draw_number_text(struct text *t)
{
    char num[96], grouped[160];
    double d = fabs(draw_real());
    if (!isfinite(d))
        d = 1.0;

    switch (below(3)) {
    case 0: snprintf(num, sizeof num, "%.*g", (int)between(1, 17), d); break;
    case 1: snprintf(num, sizeof num, "%.*f", (int)between(0, 6), d < 1e20 ? d : fmod(d, 1e20)); break;
    default: snprintf(num, sizeof num, "%lld", llabs(draw_integer())); break;
    }
    /* vary the exponent letter: the runtime also reads D as an exponent */
    char *e = strchr(num, 'e');
    if (e) {
        static const char letters[] = "eEdD";
        *e = letters[below(4)];
    }
    if (below(4) == 0)
        group_digits(num, grouped, sizeof grouped);
    else
        snprintf(grouped, sizeof grouped, "%s", num);

    static const char *const before[] = { "", "", "", "", "-", "+", "$", "-$", "$-", "(", "($", "- " };
    static const char *const after[] = { "", "", "", "", "-", "+", "$", "%", ")", " -", "$)" };
    text_blanks(t);
    text_puts(t, before[below(COUNT_OF(before))]);
    text_puts(t, grouped);
    text_puts(t, after[below(COUNT_OF(after))]);
    text_blanks(t);
}

static void draw_radix_text(struct text *t)
{
    static const char hex[] = "0123456789ABCDEFabcdef";
    int octal = below(3) == 0;
    text_blanks(t);
    if (below(8) == 0)
        text_put(t, '-');
    text_puts(t, octal ? (coin() ? "&O" : "&o") : (coin() ? "&H" : "&h"));
    int n = (int)between(0, octal ? 12 : 10);
    for (int i = 0; i < n; ++i)
        text_put(t, octal ? (unsigned)('0' + below(8)) : (unsigned char)hex[below(sizeof hex - 1)]);
    if (below(10) == 0)
        text_put(t, "G8.9 "[below(5)]);
    text_blanks(t);
}

static void draw_date_text(struct text *t)
{
    char buf[64];
    int month = (int)between(0, 13), day = (int)between(0, 32);
    int year = below(4) == 0 ? (int)between(0, 99) : (int)between(1600, 10000);
    int hour = (int)between(0, 25), minute = (int)between(0, 60), second = (int)between(0, 60);

    text_blanks(t);
    switch (below(4)) {
    case 0: snprintf(buf, sizeof buf, "%d/%d/%d", month, day, year); break;
    case 1: snprintf(buf, sizeof buf, "%04d-%02d-%02d", year, month, day); break;
    case 2: snprintf(buf, sizeof buf, "%d/%d", month, day); break;
    default: buf[0] = '\0'; break;
    }
    text_puts(t, buf);
    if (buf[0] == '\0' || coin()) {
        if (buf[0])
            text_put(t, ' ');
        if (coin())
            snprintf(buf, sizeof buf, "%d:%02d", hour, minute);
        else
            snprintf(buf, sizeof buf, "%d:%02d:%02d", hour, minute, second);
        text_puts(t, buf);
        if (coin())
            text_puts(t, coin() ? " AM" : " PM");
    }
    text_blanks(t);
}

static void draw_word_text(struct text *t)
{
    static const char *const words[] = {
        "True", "False", "true", "false", "TRUE", "yes", "no", "On", "#TRUE#",
        "#FALSE#", "abc", "NaN", "Inf", "-Inf", "Infinity", "1.#INF", "",
        " ", "\t", "AM", "PM", "Jan", "e", "E", "&", "$", "%", ",", ".", "-",
    };
    text_blanks(t);
    text_puts(t, words[below(COUNT_OF(words))]);
    text_blanks(t);
}

static void draw_garbage_text(struct text *t)
{
    static const char alphabet[] = "0123456789+-.,$%()eEdD &HhOo:/\tAaPpMmTt#";
    int n = (int)between(1, 8);
    for (int i = 0; i < n; ++i)
        text_put(t, (unsigned char)alphabet[below(sizeof alphabet - 1)]);
    if (below(10) == 0) {
        static const unsigned wide[] = { 0x00A0, 0x2212, 0xFF11, 0x0661, 0x3000, 0x00E9, 0x0000 };
        text_put(t, wide[below(COUNT_OF(wide))]);
    }
}

static VARIANT draw_text(void)
{
    struct text t = { .len = 0 };
    switch (below(8)) {
    case 0: case 1: case 2: draw_number_text(&t); break;
    case 3: draw_radix_text(&t); break;
    case 4: draw_date_text(&t); break;
    case 5: draw_word_text(&t); break;
    default: draw_garbage_text(&t); break;
    }
    return mk_strn(t.s, t.len);
}

/* Texts and doubles come up more often: they have the most behaviours. */
static enum kind draw_kind(void)
{
    static const enum kind weighted[] = {
        K_EMPTY, K_NULL, K_I2, K_I4, K_R4, K_R8, K_R8, K_CY, K_DATE,
        K_BSTR, K_BSTR, K_BSTR, K_BOOL, K_UI1,
    };
    return weighted[below(COUNT_OF(weighted))];
}

static VARIANT draw_value(enum kind k)
{
    switch (k) {
    case K_EMPTY: return mk_empty();
    case K_NULL: return mk_null();
    case K_I2: return mk_i2((int)draw_integer());
    case K_I4: return mk_i4(draw_integer());
    case K_R4: return mk_r4(draw_r4());
    case K_R8: return mk_r8(draw_real());
    case K_CY: return mk_cy(draw_cy_units());
    case K_DATE: return mk_date(below(3) ? draw_date() : draw_real());
    case K_BSTR: return draw_text();
    case K_BOOL: return mk_bool(coin());
    case K_UI1: return mk_ui1((int)draw_integer());
    default: return mk_empty();
    }
}

static void write_random_section(uint64_t seed, unsigned long rows)
{
    rng_state = seed;
    for (unsigned long i = 0; i < rows; ++i) {
        unsigned op = below(20);
        VARIANT a = draw_value(draw_kind());
        if (op < 10) {
            record_change("change", &a, kind_vt[below(K_COUNT)], 0);
        } else if (op < 13) {
            record_change("text", &a, VT_BSTR, VARIANT_ALPHABOOL);
        } else {
            VARIANT b = draw_value(draw_kind());
            record_cmp(&a, &b);
            VariantClear(&b);
        }
        VariantClear(&a);
    }
}

/* ------------------------------------------------------------------ */

static void usage(void)
{
    fputs("usage: oracle.exe [--seed N] [--random N] [--no-fixed] [--out FILE]\n"
          "  --seed N     seed of the pseudo-random section (default 1)\n"
          "  --random N   rows in the pseudo-random section (default 1500)\n"
          "  --no-fixed   write only the pseudo-random section\n"
          "  --out FILE   write the table to FILE instead of standard output\n",
          stderr);
}

static int parse_u64(const char *s, uint64_t *value)
{
    char *end;
    if (!s || !*s || *s == '-')
        return 0;
    *value = strtoull(s, &end, 0);
    return *end == '\0';
}

int main(int argc, char **argv)
{
    uint64_t seed = DEFAULT_SEED, random_rows = DEFAULT_RANDOM_ROWS;
    int fixed = 1;
    const char *out_path = NULL;

    for (int i = 1; i < argc; ++i) {
        if (!strcmp(argv[i], "--seed") && i + 1 < argc && parse_u64(argv[i + 1], &seed)) {
            ++i;
        } else if (!strcmp(argv[i], "--random") && i + 1 < argc && parse_u64(argv[i + 1], &random_rows)) {
            ++i;
        } else if (!strcmp(argv[i], "--no-fixed")) {
            fixed = 0;
        } else if (!strcmp(argv[i], "--out") && i + 1 < argc) {
            out_path = argv[++i];
        } else {
            usage();
            return 2;
        }
    }

    if (out_path) {
        out = fopen(out_path, "wb");
        if (!out) {
            fprintf(stderr, "cannot open %s\n", out_path);
            return 1;
        }
    } else {
        /* no CR LF: the table must be the same bytes on every platform */
        _setmode(_fileno(stdout), _O_BINARY);
        out = stdout;
    }

    fputs("op\tkind_a\tvalue_a\tkind_b\tvalue_b\tresult_kind\tresult_value\n", out);
    if (fixed)
        write_fixed_section();
    write_random_section(seed, (unsigned long)random_rows);

    if (fflush(out) != 0 || ferror(out)) {
        fputs("write error\n", stderr);
        return 1;
    }
    if (out != stdout)
        fclose(out);
    fprintf(stderr, "oracle: %lu rows\n", rows_written);
    return 0;
}
