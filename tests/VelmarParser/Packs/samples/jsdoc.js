/**
 * Describes it, see {@link Store.add}.
 * @module lib/store
 * @param {Array<string>} names the names
 * @param {number} [limit=10] the limit
 * @see Store#size
 * @returns {Promise<void>} later
 * @example
 * ```js
 * add(["a"]);
 * ```
 */
