// Elements are made here; texts are never read as markup.

/**
 * @param {string} name
 * @param {object} [properties] of the element; "data" and "aria" hold attributes of these families
 * @param {...(Node|string|null)} children
 */
export function element(name, properties = {}, ...children) {
    const made = document.createElement(name);
    const { data = {}, aria = {}, ...own } = properties;
    Object.assign(made, own);
    Object.assign(made.dataset, data);
    for (const [key, value] of Object.entries(aria))
        made.setAttribute(`aria-${key}`, value);
    made.append(...children.filter(child => child !== null));
    return made;
}

export const at = id => document.getElementById(id);

/** A text of the file, set apart from the words around it, in whichever direction it runs. */
export const named = text => element('bdi', {}, text);

/** The libraries write their own fixed markup; anything else that reaches the parser is shown as text. */
const fixedMarkup = new Set(['', '&nbsp;', "<div class='tabulator-arrow'></div>"]);
const escapes = { '&': '&amp;', '<': '&lt;', '>': '&gt;' };

export function guardMarkup() {
    window.trustedTypes?.createPolicy('default', {
        createHTML: text => (fixedMarkup.has(text) ? text : text.replace(/[&<>]/g, sign => escapes[sign])),
    });
}
