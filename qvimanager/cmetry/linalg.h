#ifndef QVIMANAGER_CMETRY_LINALG_H
#define QVIMANAGER_CMETRY_LINALG_H

// LinAlg: vector and matrix operations on plain float arrays, for the
// filters, weight factors and calculators. Vectors are arrays of the given
// length, matrices row-major arrays of r rows and c columns; every array
// belongs to the caller.
//
// Every sum runs in index order in single precision, each product and sum
// rounded to float: results agree to the last bit with the orders the
// engine prescribes. Nothing here raises anything.

namespace CMetry {

class LinAlg {
public:
    // v[i] += k * w[i]
    static void VAddKxV(float* v, float k, const float* w, long n);
    // v[i] = k
    static void InitV(float* v, float k, long n);
    // out = a + b
    static void VAddV(float* out, const float* a, const float* b, long n);
    // v += a
    static void VAddV(float* v, const float* a, long n);
    // out = a - b
    static void VSubV(float* out, const float* a, const float* b, long n);
    // v -= a
    static void VSubV(float* v, const float* a, long n);
    // The sum of a.
    static float SumV(const float* a, long n);
    // The square root of the sum of squares, the sum in float.
    static float BetragV(const float* a, long n);
    // The dot product, summed in float from the first element. Inline: the
    // weight factors call it for ten elements at a time.
    static float DotProd(const float* a, const float* b, long n)
    {
        float sum = 0.0f;
        for (long i = 0; i < n; ++i) {
            sum += a[i] * b[i];
        }
        return sum;
    }
    // out = k m over r times c elements.
    static void KxM(float* out, float k, const float* m, long r, long c);
    // m *= k
    static void KxM(float* m, float k, long r, long c);
    // out = k a
    static void KxV(float* out, float k, const float* a, long n);
    // v *= k
    static void KxV(float* v, float k, long n);
    // out = k1 a + k2 b
    static void KVAddKV(float* out, float k1, const float* a, float k2, const float* b, long n);
    // out = a * b element by element.
    static void VxV(float* out, const float* a, const float* b, long n);
    // v *= a element by element.
    static void VxV(float* v, const float* a, long n);
    // out = a / b element by element. A zero divisor gives an infinity or a
    // NaN (float division does not trap).
    static void VdivV(float* out, const float* a, const float* b, long n);
    // out[i] = sum over j below c of m[i stride + j] v[j], for i below r.
    static void MxV(float* out, const float* m, const float* v, long r, long c, long stride);
    // out[j] = sum over i below r of m[i c + j] v[i], for j below c.
    static void MtxV(float* out, const float* m, const float* v, long r, long c);
    static void CopyVector(float* out, const float* a, long n);
    static void CopyMatrix(float* out, const float* a, long r, long c);
    // out = a b, with a of r by k and b of k by c.
    static void MxM(float* out, const float* a, const float* b, long r, long k, long c);
    // out[j r + i] = m[i c + j]
    static void TranspM(float* out, const float* m, long r, long c);
    // out = transpose(a) a, c by c; each pair is computed once and stored in
    // both triangles.
    static void MaTxMa(const float* a, long r, long c, float* out);

    // Solves a x = b for the n by n matrix a by Gaussian elimination with
    // partial pivoting. Rows are never moved: `rows` (start of each row in
    // a) and `order` (index into b) carry the permutation, n entries each.
    // The first of equal pivot candidates is kept. A pivot of exactly 0 sets
    // `singular` and returns with x unwritten. a and b are overwritten.
    static void GaussEl(float* b, float* a, float* x, long n, bool& singular, long* rows, long* order);
    // The same with index arrays of its own.
    static void GaussEl(float* b, float* a, float* x, long n, bool& singular);

    // Solves for the n unknowns x from m weighted equations a x = y through
    // the normal equations: each row of a and each y[i] is multiplied by
    // w[i], then (aT a) x = aT y is solved into `ata` (n by n) and `atb` (n).
    // With m equal to n the system is solved directly and the weights play
    // no part. Fewer equations than unknowns, or a singular system, clear
    // `ok` (x unwritten when m < n). a and y come back changed.
    static void LeastSquareFit(const float* w, float* y, float* a, float* x, long m, long n, float* ata, float* atb,
                               long* rows, long* order, bool& ok);

private:
    LinAlg();
    LinAlg(const LinAlg&);
};

} // namespace CMetry

#endif
