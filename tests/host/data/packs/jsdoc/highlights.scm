(tag_name) @comment.doc.annotation
(type) @type.doc
