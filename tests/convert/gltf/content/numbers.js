// Numbers that are compared with a tolerance, or bit for bit.

class Numbers {
    // `size` numbers belong together, such as a vector. The tolerance is relative to the largest of them, and 0 demands
    // the same bits.
    constructor(values, { size = 1, tolerance = 1e-6 } = {}) {
        this.values = values;
        this.size = size;
        this.tolerance = tolerance;
    }

    // The index of the first number that differs, or -1.
    firstDifference(other) {
        const tolerance = Math.max(this.tolerance, other.tolerance);
        const length = Math.max(this.values.length, other.values.length);
        for (let at = 0; at < length; ++at) {
            const [a, b] = [this.values[at], other.values[at]];
            if (Object.is(a, b)) continue;
            if (!Number.isFinite(a) || !Number.isFinite(b) || tolerance === 0) return at;
            if (!(Math.abs(a - b) <= tolerance * Math.max(this.magnitude(at), other.magnitude(at)))) return at;
        }
        return -1;
    }

    // The largest absolute value of the vector with the number at an index.
    magnitude(at) {
        let largest = 0;
        const start = at - (at % this.size);
        for (let i = start; i < start + this.size; ++i) largest = Math.max(largest, Math.abs(this.values[i] ?? 0));
        return largest;
    }
}

// A number of the JSON, which may have been rounded to a float.
function near(value) {
    return new Numbers([value]);
}

// Numbers of an accessor: floats are copied bit for bit, integers that stand for fractions are rounded.
function numbersOf({ values, size, isFloat }) {
    return new Numbers(values, { size, tolerance: isFloat ? 0 : 1e-6 });
}

module.exports = { Numbers, near, numbersOf };
